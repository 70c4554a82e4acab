// The walk over the atoms of a movie: a line for each atom, then its fields, its children or a hex dump.
#include <algorithm>
#include <initializer_list>

#include "common/print.h"
#include "quicktime/atom.h"
#include "quicktime/fields.h"
#include "quicktime/printers.h"
#include "quicktime/quicktime.h"

namespace {

constexpr uint32_t kLevels = 512;  // of atoms; a movie has some ten, and each is a level of the stack
constexpr uint64_t kSmallestAtom = 8;
constexpr uint64_t kTerminator = 4;

// What four bytes that are left of a container's list may be.
enum class ListEnd { none, user_data, extensions };

uint64_t qt_atom_dump(QtAtom &atom);

bool is_one_of(const QtAtom &atom, std::initializer_list<const char *> types) {
    return std::ranges::any_of(types, [&](const char *type) { return qt_type(type) == qt_type(atom.type); });
}

void print_user_data_end(const QtAtom &atom, uint32_t end) {
    if (end == 0) {
        print("%*sOptional ending 00000000 in udta\n", atom.indent(), "");
    } else {
        print("%*sWarning: optional ending in udta is %08X\n", atom.indent(), "", end);
    }
}

void print_extensions_end(const QtAtom &atom, uint32_t end) {
    if (end == 0) {
        print("%*sEnd of sample description extension list\n", atom.indent(), "");
    } else {
        print("%*sWarning: ending in sample description extension list is %08X\n", atom.indent(), "", end);
    }
}

// Reads the four bytes that may end a list; the count read.
uint64_t read_terminator(const QtAtom &atom, ListEnd list_end) {
    const Bytes end = qt_atom_read_item(*atom.file, kTerminator);
    if (end.size() < kTerminator) return end.size();
    if (list_end == ListEnd::user_data) print_user_data_end(atom, little32(end));
    if (list_end == ListEnd::extensions) print_extensions_end(atom, little32(end));
    return end.size();
}

FileRange size_field(const QtAtom &atom) {
    return atom.size32 == 1 ? FileRange{atom.offset + 8, 8} : FileRange{atom.offset, 4};
}

// Moves to the container's end when its children did not lead there; the bytes moved by, a 32-bit number.
uint64_t adjust_to_end(const QtAtom &atom, uint64_t consumed) {
    const uint64_t walked = consumed + atom.header_size;
    if (walked == atom.size) return 0;
    from(size_field(atom));
    behind_position(2 * atom.depth + 2);
    print("Warning: incorrect size(%lld != %lld). Pointer adjusted\n", static_cast<long long>(walked),
          static_cast<long long>(atom.size));
    const int32_t distance = static_cast<int32_t>(atom.size - walked);
    qt_move(*atom.file, distance);
    return static_cast<uint64_t>(int64_t{distance});
}

// Dumps the atoms in the rest of a container of which `consumed` payload bytes are read; the payload bytes
// then consumed.
uint64_t walk_children(const QtAtom &atom, uint64_t consumed, ListEnd list_end) {
    if (atom.depth + 1 >= kLevels) {
        print("allocation failed");
        return consumed;
    }
    const uint64_t payload = atom.payload_size();
    QtAtom child = qt_atom_init(*atom.file, &atom);
    while (!atom.file->ended && consumed <= payload && payload - consumed >= kSmallestAtom) {
        if (!qt_atom_read_header(child)) break;
        consumed += qt_atom_dump(child) + child.header_size;
        if (child.shorter_than_header()) break;
    }
    if (!atom.file->ended && list_end != ListEnd::none && payload - consumed == kTerminator) {
        consumed += read_terminator(atom, list_end);
    }
    return consumed + adjust_to_end(atom, consumed);
}

uint64_t dump_user_data(const QtAtom &atom) {
    atom.file->parsing_udta = true;
    const uint64_t consumed = walk_children(atom, 0, ListEnd::user_data);
    atom.file->parsing_udta = false;
    return consumed;
}

uint64_t dump_base_media_header(const QtAtom &atom) {
    atom.file->parsing_gmhd = true;
    const uint64_t consumed = walk_children(atom, 0, ListEnd::none);
    atom.file->parsing_gmhd = false;
    return consumed;
}

// Data references and sample descriptions. The count is shown; the walk goes by the size.
uint64_t dump_entry_list(QtAtom &atom) {
    static constexpr QtRow kRows[] = {{0, QtField::version_flags}, {4, QtField::u32, "nentries="}};
    const uint64_t count = qt_atom_read_more(atom, 8);
    print_qt_rows(atom, kRows);
    return walk_children(atom, count, ListEnd::none);
}

uint64_t dump_unknown(QtAtom &atom) {
    print("%*s*** UNKNOWN ***\n", atom.indent(), "");
    if (atom.size32 == 0) return 0;
    const uint64_t count = qt_atom_read_data(atom);
    qt_hexdump(atom.data, atom.indent(), "data");
    return count;
}

uint64_t skip_payload(const QtAtom &atom) {
    qt_skip(*atom.file, atom.payload_size());
    return atom.payload_size();
}

// Shows what an atom holds beyond the fields that are known; the bytes read.
uint64_t dump_rogue_bytes(QtAtom &atom, uint64_t consumed) {
    if (atom.size32 <= consumed + kSmallestAtom) return 0;
    const uint64_t rest = atom.size32 - consumed - kSmallestAtom;
    const uint64_t count = qt_atom_read_more(atom, rest);
    from(size_field(atom));
    print("%*s*** %d ", atom.indent(), "", static_cast<int32_t>(rest));
    label_begins();
    print("rogue bytes");
    label_ends();
    print(" ***:\n");
    qt_hexdump(atom.data, atom.indent(), "data");
    return count;
}

uint64_t dump_fields(QtAtom &atom) {
    std::optional<QtRead> read = qt_print_header(atom);
    if (!read) read = qt_print_table(atom);
    if (!read) read = qt_print_description(atom);
    if (!read) return dump_unknown(atom);
    if (read->extensions) return walk_children(atom, read->count, ListEnd::extensions);
    return read->count + dump_rogue_bytes(atom, read->count);
}

void print_atom_line(const QtAtom &atom) {
    from({atom.offset, 8});
    print("%*sATOM %d ", atom.indent() - 2, "", static_cast<int>(atom.depth));
    behind_position(2 * atom.depth);
    label_begins(false);
    print("%4.4s", atom.type);
    label_ends();
    print(" (0x%05X) size=%-9u (0x%07X) offset=0x%16llx\n", qt_type(atom.type), atom.size32, atom.size32,
          static_cast<unsigned long long>(atom.offset));
}

// Prints the atom whose header has just been read; the payload bytes consumed.
uint64_t qt_atom_dump(QtAtom &atom) {
    print_atom_line(atom);
    if (atom.shorter_than_header()) return 0;
    if (is_one_of(atom, {"moov", "trak", "mdia", "minf", "dinf", "stbl", "edts", "tapt", "wave"})) {
        return walk_children(atom, 0, ListEnd::none);
    }
    if (is_one_of(atom, {"udta"})) return dump_user_data(atom);
    if (is_one_of(atom, {"gmhd"})) return dump_base_media_header(atom);
    if (is_one_of(atom, {"tmcd"}) && atom.file->parsing_gmhd) return walk_children(atom, 0, ListEnd::none);
    if (is_one_of(atom, {"dref", "stsd"})) return dump_entry_list(atom);
    if (is_one_of(atom, {"free", "skip", "mdat"})) return skip_payload(atom);
    return dump_fields(atom);
}

// Atoms in file order; a header that the file cuts, or an atom that cannot be passed, ends it.
void walk_file(QtFile &file) {
    QtAtom atom = qt_atom_init(file, nullptr);
    do {
        if (!qt_atom_read_header(atom)) return;
        qt_atom_dump(atom);
    } while (!file.ended && !atom.shorter_than_header() && file.position < file.end());
}

}  // namespace

int qtdump(const char *name) {
    QtFile file(name);
    if (file.input && !is_addressable(file.input->size())) {
        print("allocation failed");
        return 1;
    }
    print("Fileformat: QT\n");
    if (!file.input) {
        file.problems |= QtFile::kFileNotFound;
    } else {
        walk_file(file);
    }
    if (file.problems) {
        print("\nWARNING: Has been detected some possible problems in this QT file:\n");
        if (file.problems & QtFile::kFileNotFound) print("\tFile not found\n");
    } else {
        print("\nNo problems found.\n");
    }
    return 0;
}
