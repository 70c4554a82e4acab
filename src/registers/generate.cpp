// Makes arrays of the register tables: generate_registers_today ELEMENTS GROUPS LABELS TYPES OUTPUT.
#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <map>
#include <string>
#include <vector>

namespace {

using Fields = std::vector<std::string>;

std::vector<Fields> rows_of(const char *path) {
    std::ifstream in(path);
    std::vector<Fields> rows;
    for (std::string line; std::getline(in, line);) {
        if (line.empty() || line[0] == '#') continue;
        Fields fields;
        for (size_t at = 0; at <= line.size();) {
            const size_t end = std::min(line.find('\t', at), line.size());
            fields.push_back(line.substr(at, end - at));
            at = end + 1;
        }
        fields.resize(5);
        rows.push_back(fields);
    }
    return rows;
}

std::string quoted(const std::string &text) {
    std::string out = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') out += '\\';
        out += c;
    }
    return out + '"';
}

// "06.0e.2b..." as bytes, without the version, and for groups without the coding of the set.
std::string key_of(const std::string &label, bool group) {
    std::string key;
    for (size_t i = 0; i + 1 < label.size(); i += 3)
        key += static_cast<char>(std::stoi(label.substr(i, 2), nullptr, 16));
    key.resize(16);
    key[1] = 0x0E;  // some rows have another byte there
    key[7] = 0;
    if (group) key[5] = 0;
    return key;
}

void put_entries(std::ostream &out, const char *name, const std::vector<Fields> &rows, bool group,
                 bool typed) {
    std::map<std::string, const Fields *> sorted;  // later rows of other versions win
    for (const Fields &row : rows) sorted[key_of(row[0], group)] = &row;
    out << "const RegisterEntry " << name << "[] = {\n";
    for (const auto &[key, row] : sorted) {
        out << "    {{";
        for (const char c : key) out << static_cast<int>(static_cast<unsigned char>(c)) << ",";
        out << "}, " << quoted((*row)[1]) << ", " << quoted((*row)[2]) << ", "
            << quoted(typed ? (*row)[3] : "") << "},\n";
    }
    out << "};\nconst size_t " << name << "_count = " << sorted.size() << ";\n";
}

void put_types(std::ostream &out, std::vector<Fields> rows) {
    std::sort(rows.begin(), rows.end());
    out << "const RegisterType register_types[] = {\n";
    for (const Fields &row : rows) {
        out << "    {" << quoted(row[0]) << ", " << quoted(row[1]) << ", " << (row[2].empty() ? "0" : row[2])
            << ", " << quoted(row[3]) << "},\n";
    }
    out << "};\nconst size_t register_types_count = " << rows.size() << ";\n";
}

}  // namespace

int main(int argc, char **argv) {
    if (argc != 6) return 1;
    std::ofstream out(argv[5]);
    out << "// Made of the tables in src/registers/data.\n#include \"registers/arrays.h\"\n";
    put_entries(out, "register_elements", rows_of(argv[1]), false, true);
    put_entries(out, "register_groups", rows_of(argv[2]), true, false);
    put_entries(out, "register_labels", rows_of(argv[3]), false, false);
    put_types(out, rows_of(argv[4]));
    return out.good() ? 0 : 1;
}
