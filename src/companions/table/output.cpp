#include "companions/table/output.h"

#include <algorithm>

#include "companions/json/json.h"
#include "companions/safe_text.h"

namespace {

std::string csv_field(const std::string &text) {
    std::string safe;
    SafeText converter;
    converter.add(text, safe);
    converter.finish(safe);
    if (safe.find_first_of(",\"\r\n") == std::string::npos) return safe;
    std::string quoted = "\"";
    for (const char c : safe) {
        if (c == '"') quoted += '"';
        quoted += c;
    }
    return quoted + '"';
}

std::vector<std::string> names_of(const Selection &selection) {
    std::vector<std::string> names = selection.names;
    if (names.empty()) {
        for (const ColumnRow &column : table_columns()) names.emplace_back(column.name);
    }
    for (const std::string &field : selection.fields) {
        if (std::ranges::find(names, field) == names.end()) names.push_back(field);
    }
    return names;
}

std::string json_text(std::string_view text) {
    std::string out;
    append_json(out, text, false);
    return out;
}

std::string more_object(const Row &row) {
    std::string more = "{";
    for (const auto &[name, value] : row.more) {
        if (more.size() > 1) more += ", ";
        more += json_text(name) + ": " + json_text(value);
    }
    return more + "}";
}

std::string json_value(const Row &row, const std::string &name, const Selection &selection) {
    const auto columns = table_columns();
    const auto column = std::ranges::find(columns, name, &ColumnRow::name);
    if (column != columns.end()) {
        const std::string &text = row[column->column];
        // Tracks that differ have several numbers.
        const bool is_text = column->kind == ColumnRow::text || text.find("; ") != std::string::npos;
        return text.empty() ? "null" : is_text ? json_text(text) : text;
    }
    if (name == "more") return more_object(row);
    if (std::ranges::find(selection.fields, name) == selection.fields.end()) {
        const std::string text = row.named(name);
        return text.empty() ? "null" : json_text(text);
    }
    std::string array = "[";
    for (const auto &[key, value] : row.fields) {
        if (key == name) array += (array.size() > 1 ? ", " : "") + json_text(value);
    }
    return array + "]";
}

}  // namespace

std::string csv_header(const Selection &selection) {
    std::string line;
    for (const std::string &name : names_of(selection)) line += (line.empty() ? "" : ",") + csv_field(name);
    return line + "\r\n";
}

std::string csv_line(const Row &row, const Selection &selection) {
    std::string line;
    bool first = true;
    for (const std::string &name : names_of(selection)) {
        if (!first) line += ',';
        line += csv_field(row.named(name));
        first = false;
    }
    return line + "\r\n";
}

std::string json_object(const Row &row, const Selection &selection) {
    std::string object = "{";
    const auto add = [&](const std::string &name, const std::string &value) {
        if (object.size() > 1) object += ", ";
        object += json_text(name) + ": " + value;
    };
    for (const std::string &name : names_of(selection)) add(name, json_value(row, name, selection));
    if (!selection.names.empty()) return object + "}";
    add("more", more_object(row));
    return object + "}";
}
