// SPDX-License-Identifier: MIT
#include "tools/soundcheck/note_stream.h"

#include <gtest/gtest.h>
#include <stdexcept>

using soundcheck::samplesOfNote;
using Samples = std::vector<std::int16_t>;

TEST(NoteStreamTest, ThePaddingBehindEachPeriodIsLeftOut) {
    EXPECT_EQ(samplesOfNote({1, 0, 2, 0, 0, 0, 0, 0, 0xff, 0xff, 4, 1, 0, 0, 0, 0}, 2), (Samples{1, 2, -1, 260}));
}

TEST(NoteStreamTest, APeriodThatIsCutShortIsTakenAsFarAsItGoes) {
    EXPECT_EQ(samplesOfNote({1, 0, 0, 0, 7, 0}, 1), (Samples{1, 7}));
    EXPECT_EQ(samplesOfNote({1, 0, 0, 0, 7}, 1), (Samples{1}));
    EXPECT_EQ(samplesOfNote({1, 0, 2, 0, 0}, 2), (Samples{1, 2}));
    EXPECT_EQ(samplesOfNote({}, 16), Samples());
}

TEST(NoteStreamTest, PaddingThatIsNotZeroMeansAnotherPeriod) {
    EXPECT_THROW(samplesOfNote({1, 0, 2, 0, 0, 0, 0, 0}, 1), std::runtime_error);
    EXPECT_THROW(samplesOfNote({1, 0}, 0), std::runtime_error);
    EXPECT_THROW(samplesOfNote({1, 0}, ~std::size_t{0}), std::runtime_error);
}
