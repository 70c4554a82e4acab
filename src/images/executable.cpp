// Windows portable executables: the COFF file header behind the MZ header.
#include <ctime>

#include "common/field_rows.h"
#include "common/print.h"
#include "common/stream.h"
#include "images/images.h"

namespace {

constexpr uint32_t kIsDll = 0x2000;

constexpr CodeName kMachines[] = {
    {0x014C, "x86"}, {0x01C0, "ARM little endian"}, {0x0200, "Itanium"}, {0x0EBC, "EFI byte code"},
    {0x8664, "x64"},
};

uint16_t exe16(Bytes b, uint64_t offset) { return little16(b, offset); }
uint32_t exe32(Bytes b, uint64_t offset) { return little32(b, offset); }

}  // namespace

void exedump(Bytes header) {
    const uint64_t pe = exe32(header, 0x3C);
    const OrderedBytes fields = little_endian(header.from(pe));
    const std::time_t stamp = static_cast<int32_t>(exe32(header, pe + 8));
    const uint32_t characteristics = exe16(header, pe + 22);
    forget();
    also(header, 0, 2);
    also(header, 0x3C, 4);
    also(fields.bytes, 0, 4);
    also(fields.bytes, 23, 1);
    print("Fileformat:%s\n", characteristics & kIsDll ? "DLL" : "EXE");
    print_field_row(fields, {4, Field::name16, " Platform         ", {kMachines, "?"}});
    from(fields.bytes, 8, 4);
    print(" TimeDateStamp    %.24s\n", std::ctime(&stamp));
    print_field_row(fields, {22, Field::hex16, " Characteristics  "});
}
