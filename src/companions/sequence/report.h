// Reports on sequences as text and as JSON.
#pragma once

#include <string>
#include <vector>

#include "companions/sequence/check.h"

// A line a finding behind the sequence's name, and the summary: "shot.#.dpx: frame 100: width 30, its
// neighbours 32".
std::string report_text(const std::string &name, const SequenceReport &report, bool numbered);
// {"sequence": "shot.#.dpx", "summary": ..., "findings": [{"kind": "size", "first": 100, "last": 100, "text":
// ...}]}
std::string report_json(const std::string &name, const SequenceReport &report);
