#include "companions/table/fields.h"

#include <vector>

#include "companions/table/values.h"

namespace {

// The value behind a label: without the colon, and the C of a core field, between them.
std::string_view value_after(std::string_view text, std::string_view label) {
    std::string_view value = trimmed(text.substr(label.size()));
    if (value.starts_with("C :")) value.remove_prefix(2);
    if (value.starts_with(':')) value.remove_prefix(1);
    return trimmed(value);
}

bool has_label(std::string_view text, std::string_view label) {
    if (!text.starts_with(label)) return false;
    return text.size() == label.size() || text[label.size()] == ' ' || text[label.size()] == ':';
}

class FieldReader : public DumpReader {
 public:
    explicit FieldReader(const FieldFormat &format) : format_(format) {}

    void line(std::string_view line) override {
        const std::string_view text = without_position(line);
        if (format_.last && text.starts_with(format_.last)) {
            done_ = true;
            return;
        }
        if (!open_section(text, !line.starts_with(' '))) take_fields(trimmed(text));
    }

    void finish(Row &row) override {
        for (size_t i = 0; i < static_cast<size_t>(Column::count); i++) {
            const Column column = static_cast<Column>(i);
            row.offer(column, row_[column]);
        }
        if (format_.compute) format_.compute(row);
        row.offer(Column::format, format_.name);
    }

 private:
    bool open_section(std::string_view text, bool ends_section) {
        const std::string_view name = trimmed(text);
        bool opened = false;
        for (const DumpField &field : format_.fields) {
            if (*field.section == '\0' || !name.starts_with(field.section)) continue;
            if (!ends_section && name != field.section) continue;
            opened = true;
            if (*field.label == '\0') row_.offer(field.column, field.convert(name));
        }
        if (opened || ends_section) section_ = name;
        return opened;
    }

    void take_fields(std::string_view text) {
        for (const DumpField &field : format_.fields) {
            if (*field.label == '\0' || !has_label(text, field.label) || !section_.starts_with(field.section))
                continue;
            row_.offer(field.column, field.convert(value_after(text, field.label)));
        }
    }

    const FieldFormat &format_;
    std::string section_;
    Row row_;
};

}  // namespace

std::unique_ptr<DumpReader> field_reader(const FieldFormat &format) {
    return std::make_unique<FieldReader>(format);
}
