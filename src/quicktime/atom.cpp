#include "quicktime/atom.h"

#include <algorithm>

#include "common/hexrow.h"
#include "common/line_buffer.h"

namespace {

// How many times its length (a small file counts as one block more) a file is walked over again. Containers
// whose children overrun them lead the walk back; a file made of such containers would double its work with
// every one of them.
constexpr uint64_t kMostReturns = 16;

uint64_t bytes_left(const QtFile &file) {
    return file.position < file.end() ? file.end() - file.position : 0;
}

// The next n bytes, which may not exceed the area; fewer where the file ends.
Bytes next_bytes(QtFile &file, uint64_t n) {
    if (bytes_left(file) == 0) return {};
    const Bytes bytes = file.input->bytes(file.position, n);
    return bytes.sub(0, bytes_left(file));
}

}  // namespace

QtAtom qt_atom_init(QtFile &file, const QtAtom *parent) {
    QtAtom atom;
    atom.file = &file;
    if (parent) atom.depth = parent->depth + 1;
    return atom;
}

uint32_t qt_atom_read_header(QtAtom &atom) {
    QtFile &file = *atom.file;
    const Bytes header = next_bytes(file, 16);
    atom.offset = file.position;
    atom.size32 = big32(header);
    atom.header_size = atom.size32 == 1 ? 16 : 8;
    if (!header.has(0, atom.header_size)) {
        file.ended = true;
        return 0;
    }
    for (unsigned i = 0; i < 4; i++) atom.type[i] = static_cast<char>(header[4 + i]);
    file.position += atom.header_size;
    if (atom.size32 == 1) {
        atom.size = swap64(header, 8);
    } else if (atom.size32 == 0) {
        atom.size = atom.header_size + bytes_left(file);
    } else {
        atom.size = atom.size32;
    }
    return atom.header_size;
}

uint64_t qt_atom_read_more(QtAtom &atom, uint64_t n) {
    QtFile &file = *atom.file;
    n = std::min(n, bytes_left(file));
    atom.data = next_bytes(file, std::min<uint64_t>(n, QtAtom::capacity));
    file.position += n;
    return n;
}

Bytes qt_atom_read_item(QtFile &file, uint64_t n) {
    const Bytes items = file.input->present(file.position, std::min(n, bytes_left(file)));
    file.position += items.size();
    return items;
}

uint64_t qt_atom_read_data(QtAtom &atom) {
    const uint64_t payload = atom.payload_size();
    if (atom.size < QtAtom::capacity) return qt_atom_read_more(atom, payload);
    atom.data = next_bytes(*atom.file, std::min<uint64_t>(payload, QtAtom::capacity));
    qt_skip(*atom.file, payload);
    return payload;
}

void qt_skip(QtFile &file, uint64_t n) {
    file.position = n < QtFile::kFarthest - file.position ? file.position + n : QtFile::kFarthest;
}

void qt_move(QtFile &file, int32_t distance) {
    if (distance >= 0) {
        qt_skip(file, static_cast<uint64_t>(distance));
        return;
    }
    const uint64_t back = static_cast<uint64_t>(-int64_t{distance});
    if (back > file.position) return;
    const uint64_t from = std::min(file.position, file.end());
    file.position -= back;
    if (file.position < from) file.moved_back += from - file.position;
    if (file.moved_back / kMostReturns > file.end() + Input::kBlock) file.ended = true;
}

void qt_hexdump(Bytes bytes, int indent, std::string_view label) {
    LineBuffer out;
    put_hexrows(out, bytes, {}, [&](LineBuffer &row, uint64_t offset) {
        behind_position(static_cast<uint32_t>(indent));
        row.blanks(static_cast<size_t>(indent));
        row.own(label);
        row.literal(" ");
        row.hex(offset, 4);
        row.literal(": ");
    });
}
