// companions/files.h where directories cannot be listed: every operand is a file.
#include "companions/files.h"

FileList list_files(const std::vector<std::string> &operands) {
    return {operands, std::vector<bool>(operands.size(), true), {}};
}
