#include "companions/table/read.h"

#include <algorithm>

#include "common/link.h"
#include "companions/lines/lines.h"
#include "main/dump.h"
#include "main/facts.h"

namespace {

constexpr size_t kMostValues = 1000;  // of a pattern

// Collects what a dump says in the lines that patterns name.
class FieldListener : public Listener {
 public:
    FieldListener(const std::vector<std::string> &names, Row &row) : names_(names), row_(row) {
        for (const std::string &name : names) {
            patterns_.emplace_back(name);
            values_.emplace_back();
        }
    }

    void line(const Line &line) override {
        if (!goes_on_) {
            places_.place(line, field_);
            if (!line.is_listing) take();
        }
        goes_on_ = line.goes_on;
    }

    void finish() {
        for (size_t i = 0; i < names_.size(); i++) {
            for (std::string &value : values_[i])
                row_.fields.emplace_back(field_name(names_[i]), std::move(value));
        }
    }

 private:
    void take() {
        for (size_t i = 0; i < patterns_.size(); i++) {
            if (!patterns_[i].matches(field_.path)) continue;
            std::vector<std::string> &values = values_[i];
            for (const FieldValue &value : field_.values) {
                if (value.kind == FieldValue::unset || values.size() == kMostValues) continue;
                if (std::ranges::find(values, value.content) == values.end())
                    values.emplace_back(value.content);
            }
        }
    }

    const std::vector<std::string> &names_;
    std::vector<PathPattern> patterns_;
    std::vector<std::vector<std::string>> values_;
    Row &row_;
    LinePlaces places_;
    FieldLine field_;
    bool goes_on_ = false;
};

}  // namespace

Row read_row(const std::string &path, const FieldRequest &request) {
    Link link;
    Input input(path.c_str(), &link);  // opened once: it may be a pipe
    Row row = row_of(facts(input), path);
    if (request.patterns.empty() || !input.open()) return row;
    FieldListener listener(request.patterns, row);
    dump(input, request.options, &listener);
    listener.finish();
    return row;
}
