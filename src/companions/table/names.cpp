#include "companions/table/names.h"

#include <algorithm>
#include <iterator>

#include "companions/table/row.h"
#include "companions/table/terminal.h"

namespace {

// In the order of the alphabet, as the manual page has them.
constexpr std::string_view kMore[] = {"active image",
                                      "annotation",
                                      "application schemes",
                                      "bits a pixel",
                                      "block coder",
                                      "brand",
                                      "byte order",
                                      "camera",
                                      "camera serial",
                                      "channel padding",
                                      "chromaticities",
                                      "clean aperture",
                                      "clip name",
                                      "coding label",
                                      "colorimetric",
                                      "colour",
                                      "comment",
                                      "conforms to",
                                      "container label",
                                      "content light",
                                      "copyright",
                                      "data offset",
                                      "data tracks",
                                      "data window",
                                      "description",
                                      "disabled tracks",
                                      "display window",
                                      "Dolby Vision",
                                      "edit lists",
                                      "edit rate",
                                      "elements",
                                      "exposure index",
                                      "external data",
                                      "file name",
                                      "film format",
                                      "footer partition",
                                      "frame id",
                                      "frame position",
                                      "gamma",
                                      "header partition",
                                      "image offset",
                                      "image padding",
                                      "industry header",
                                      "input device",
                                      "keycode text",
                                      "layers",
                                      "levels",
                                      "line order",
                                      "line padding",
                                      "look",
                                      "loudness",
                                      "loudness range",
                                      "make",
                                      "mastering display",
                                      "material",
                                      "matrix label",
                                      "metadata schemes",
                                      "mirrored",
                                      "model",
                                      "momentary loudness",
                                      "name",
                                      "note",
                                      "odd",
                                      "orientation",
                                      "originator",
                                      "originator reference",
                                      "owner",
                                      "packing",
                                      "pages",
                                      "partitions",
                                      "parts",
                                      "pictures",
                                      "primaries label",
                                      "profile",
                                      "programs",
                                      "progression",
                                      "project",
                                      "recorded",
                                      "scene",
                                      "sense",
                                      "sensor rate",
                                      "short-term loudness",
                                      "shutter angle",
                                      "size field",
                                      "slate",
                                      "sound content",
                                      "source file",
                                      "take",
                                      "tile size",
                                      "tiles",
                                      "title",
                                      "tracks",
                                      "trailing bytes",
                                      "transfer",
                                      "transfer label",
                                      "true peak",
                                      "umid",
                                      "UMID",
                                      "user bits",
                                      "view",
                                      "white balance",
                                      "wrapping"};

}  // namespace

bool is_table_name(std::string_view name) {
    const auto columns = table_columns();
    return name == "more" || std::ranges::find(kMore, name) != std::end(kMore) ||
           std::ranges::find(columns, name, &ColumnRow::name) != columns.end();
}

std::string table_name(const std::string &name) {
    const size_t start = name.find_first_not_of(' ');
    if (is_table_name(name) || start == std::string::npos) return name;
    const std::string title = title_of(name.substr(start, name.find_last_not_of(' ') - start + 1));
    const auto means = [&](std::string_view known) { return title_of(std::string(known)) == title; };
    const auto columns = table_columns();
    const auto column = std::ranges::find_if(columns, means, &ColumnRow::name);
    if (column != columns.end()) return column->name;
    const auto further = std::ranges::find_if(kMore, means);
    return further != std::end(kMore) ? std::string(*further) : name;
}
