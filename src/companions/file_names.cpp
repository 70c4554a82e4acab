#include <cerrno>
#include <cstdio>
#include <cstring>

#include "companions/command.h"
#include "companions/files.h"
#include "companions/safe_text.h"

bool read_names(const std::string &file, char end, std::vector<std::string> &names) {
    FILE *in = file == "-" ? stdin : std::fopen(file.c_str(), "rb");
    if (!in) {
        complain(safe_name(file) + ": " + std::strerror(errno));
        return false;
    }
    std::string name;
    for (int c = 0; c != EOF;) {
        c = std::getc(in);
        if (c != EOF && c != static_cast<unsigned char>(end)) {
            name += static_cast<char>(c);
        } else if (!name.empty()) {
            names.push_back(std::move(name));
            name.clear();
        }
    }
    const bool failed = std::ferror(in) != 0;
    if (failed) complain(safe_name(file) + ": " + std::strerror(errno));
    if (in != stdin) std::fclose(in);
    return !failed;
}
