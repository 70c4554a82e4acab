#include <gtest/gtest.h>

#include "support/bytes_of.h"
#include "support/command.h"
#include "support/facts_text.h"

TEST(ExrFacts, Samples) {
    Transcript transcript;
    SHOW(facts_of_samples("exr"));
}
