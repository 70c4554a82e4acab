// What differs between two files, as text and as JSON.
#pragma once

#include <memory>
#include <string>

#include "companions/diff/compare.h"
#include "companions/diff/facts.h"
#include "companions/job.h"

// Takes what differs, facts first.
class Report : public DifferenceTaker {
 public:
    virtual void begin(const std::string &one, const std::string &other) = 0;
    virtual void fact(const FactDifference &difference) = 0;
    virtual void end() = 0;

    bool any() const { return any_; }

 protected:
    bool any_ = false;
};

// Differences as people say them, then fields under their sections, as text that is safe for a terminal;
// nothing where nothing differs.
std::unique_ptr<Report> text_report(JobOutput &output);
// An object a pair.
std::unique_ptr<Report> json_report(JobOutput &output);
