#include "companions/sequence/report.h"

#include "companions/json/json.h"
#include "companions/safe_text.h"

namespace {

std::string frames_text(const Finding &finding) {
    if (finding.is_of_all) return "all frames: ";
    if (finding.first == finding.last) return "frame " + std::to_string(finding.first) + ": ";
    return "frames " + std::to_string(finding.first) + "-" + std::to_string(finding.last) + ": ";
}

std::string json_text(std::string_view text) {
    std::string out;
    append_json(out, text, false);
    return out;
}

}  // namespace

std::string report_text(const std::string &name, const SequenceReport &report, bool numbered) {
    const std::string start = safe_name(name) + ": ";
    std::string text;
    for (const Finding &finding : report.findings)
        text += start + (numbered ? frames_text(finding) : "") + finding.text + "\n";
    const size_t count = report.findings.size();
    text += start + report.summary + ": ";
    text += count == 0 ? "clean" : std::to_string(count) + (count == 1 ? " finding" : " findings");
    return text + "\n";
}

std::string report_json(const std::string &name, const SequenceReport &report) {
    std::string text = "{\"sequence\": " + json_text(name) + ", \"summary\": " + json_text(report.summary) +
                       ", \"findings\": [";
    bool first = true;
    for (const Finding &finding : report.findings) {
        text += first ? "\n" : ",\n";
        text += "  {\"kind\": " + json_text(finding.kind) + ", \"first\": " + std::to_string(finding.first) +
                ", \"last\": " + std::to_string(finding.last) + ", \"text\": " + json_text(finding.text) +
                "}";
        first = false;
    }
    return text + (first ? "]}" : "\n]}");
}
