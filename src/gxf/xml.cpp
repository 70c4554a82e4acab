// XML in the user data of a UMF description.
#include "common/line_buffer.h"
#include "common/values.h"
#include "gxf/packets.h"

namespace {

constexpr unsigned kDeepest = 16;  // deeper tags keep this indentation

struct XmlLine {
    char text[2048];
    size_t length = 0;
    bool inside_tag = false;
    bool after_bracket = false;  // the last character was "<"
    bool closing_tag = false;

    void add(uint16_t unit) {
        if (is_printable(unit) && length < sizeof text) text[length++] = static_cast<char>(unit);
    }
    void clear() {
        length = 0;
        inside_tag = after_bracket = closing_tag = false;
    }
};

// Follows the tag that a line holds; declarations and comments count as opening tags.
void follow_tag(XmlLine &line, uint16_t unit) {
    if (unit == '<') {
        line.inside_tag = line.after_bracket = true;
        return;
    }
    if (unit == '/') {
        if (line.after_bracket) {
            line.closing_tag = true;
        } else {
            line.inside_tag = false;
        }
    }
    line.after_bracket = false;
}

unsigned depth_after(const XmlLine &line, unsigned depth) {
    if (line.closing_tag) return depth > 0 ? depth - 1 : 0;
    return line.inside_tag && depth < kDeepest ? depth + 1 : depth;
}

// An opening tag stands where its element does, a closing tag below it, an empty one below its parent.
void print_line(LineBuffer &out, const XmlLine &line, unsigned depth) {
    out.blanks(depth + (line.closing_tag ? 1 : 0) - (line.inside_tag ? 1 : 0));
    out.text({line.text, line.length});
    out.end_line();
}

}  // namespace

void gxfxml(Bytes xml) {
    LineBuffer out;
    XmlLine line;
    unsigned depth = 1;
    for (uint64_t i = 0; xml.has(i, 2); i += 2) {
        const uint16_t unit = little16(xml, i);
        if ((unit & 0xFF) == 0) return;
        follow_tag(line, unit);
        line.add(unit);
        if (unit != '>') continue;
        depth = depth_after(line, depth);
        print_line(out, line, depth);
        line.clear();
    }
}
