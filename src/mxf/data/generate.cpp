// Turns the register tables (tab-separated) into C++ arrays while keldump is built:
//   generate rp210.tsv rp224.tsv OUTPUT.cpp
// Rows stay in register order; the indexes beside them are sorted by what the lookups compare, equal rows in
// register order, so that the first row of a run of equals is the one that a search from the top would find.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

struct Row {
    std::string ul;  // 16 bytes
    unsigned long local_tag = 0;
    unsigned long kind = 0;
    unsigned long length = 0;
    std::string name;
};

[[noreturn]] void fail(const std::string &what) {
    std::fprintf(stderr, "generate: %s\n", what.c_str());
    std::exit(1);
}

std::vector<std::string> columns(const std::string &line) {
    std::vector<std::string> found(1);
    for (const char c : line) {
        if (c == '\t') {
            found.emplace_back();
        } else {
            found.back() += c;
        }
    }
    return found;
}

std::string bytes_of(const std::string &ul) {
    std::string bytes;
    for (size_t i = 0; i + 1 < ul.size(); i += 3)
        bytes += static_cast<char>(std::stoi(ul.substr(i, 2), nullptr, 16));
    if (bytes.size() != 16) fail("not a label: " + ul);
    return bytes;
}

bool next_line(std::FILE *in, std::string &line) {
    line.clear();
    int c;
    while ((c = std::fgetc(in)) != EOF && c != '\n') line += static_cast<char>(c);
    return c != EOF || !line.empty();
}

std::vector<Row> read(const char *path, size_t column_count) {
    std::FILE *in = std::fopen(path, "r");
    if (!in) fail(std::string("cannot read ") + path);
    std::vector<Row> rows;
    for (std::string line; next_line(in, line);) {
        if (line.empty() || line[0] == '#') continue;
        const std::vector<std::string> c = columns(line);
        if (c.size() != column_count) fail("wrong number of columns: " + line);
        Row row;
        row.ul = bytes_of(c[0]);
        row.name = c.back();
        if (column_count == 5) {
            row.local_tag = std::stoul(c[1], nullptr, 16);
            row.kind = std::stoul(c[2]);
            row.length = std::stoul(c[3]);
        }
        rows.push_back(row);
    }
    std::fclose(in);
    return rows;
}

std::string literal(const std::string &text) {
    std::string out = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') out += '\\';
        out += c;
    }
    return out + "\"";
}

void write_ul(std::FILE *out, const std::string &ul) {
    std::fprintf(out, "{");
    for (size_t i = 0; i < 16; i++) std::fprintf(out, "%s0x%02X", i ? ", " : "", static_cast<uint8_t>(ul[i]));
    std::fprintf(out, "}");
}

// Row numbers sorted by a key of each row.
template <typename Key>
void write_index(std::FILE *out, const char *name, std::vector<uint16_t> numbers, Key key) {
    std::stable_sort(numbers.begin(), numbers.end(), [&](uint16_t a, uint16_t b) { return key(a) < key(b); });
    std::fprintf(out, "const uint16_t %s[] = {", name);
    for (size_t i = 0; i < numbers.size(); i++)
        std::fprintf(out, "%s%u,", i % 16 ? " " : "\n    ", numbers[i]);
    std::fprintf(out, "\n};\n");
}

std::vector<uint16_t> all(size_t count) {
    std::vector<uint16_t> numbers;
    for (size_t i = 0; i < count; i++) numbers.push_back(static_cast<uint16_t>(i));
    return numbers;
}

// A label without its register version.
std::string without_version(std::string ul) {
    ul[7] = 0;
    return ul;
}

}  // namespace

int main(int argc, char **argv) {
    if (argc != 4) fail("usage: generate rp210.tsv rp224.tsv OUTPUT.cpp");
    const std::vector<Row> rp210 = read(argv[1], 5);
    const std::vector<Row> rp224 = read(argv[2], 2);
    std::FILE *out = std::fopen(argv[3], "w");
    if (!out) fail(std::string("cannot write ") + argv[3]);

    std::fprintf(out, "#include \"mxf/dictionary.h\"\n\nconstexpr rp210_entry rp210[] = {\n");
    std::vector<uint16_t> tagged;
    for (size_t i = 0; i < rp210.size(); i++) {
        const Row &row = rp210[i];
        if (row.local_tag) tagged.push_back(static_cast<uint16_t>(i));
        std::fprintf(out, "    {");
        write_ul(out, row.ul);
        std::fprintf(out, ", 0x%lX, %s, ValueKind{%lu}, %lu},\n", row.local_tag, literal(row.name).c_str(),
                     row.kind, row.length);
    }
    std::fprintf(out, "};\nconst size_t rp210_count = %zu;\n", rp210.size());
    write_index(out, "rp210_by_label", all(rp210.size()),
                [&](uint16_t i) { return without_version(rp210[i].ul); });
    write_index(out, "rp210_by_tag", tagged, [&](uint16_t i) { return rp210[i].local_tag; });
    std::fprintf(out, "const size_t rp210_tag_count = %zu;\n\nconstexpr rp224_entry rp224[] = {\n",
                 tagged.size());
    for (const Row &row : rp224) {
        std::fprintf(out, "    {");
        write_ul(out, row.ul);
        std::fprintf(out, ", 16, %s},\n", literal(row.name).c_str());
    }
    std::fprintf(out, "};\nconst size_t rp224_count = %zu;\n", rp224.size());
    write_index(out, "rp224_by_label", all(rp224.size()), [&](uint16_t i) { return rp224[i].ul; });
    return std::fclose(out) == 0 ? 0 : 1;
}
