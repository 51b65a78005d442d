// The table of graph forms: the numbers of closed graphs are used again,
// lowest first, and a table whose forms have all closed is back to one free
// entry.
#include <gtest/gtest.h>

#include "views/view_forms.h"

namespace tl {
namespace {

TEST(ViewForms, NumbersOfClosedFormsAreUsedAgainLowestFirst) {
    ViewForms t;
    EXPECT_EQ(t.Count(), 1);
    int a = 0, b = 0, c = 0, d = 0, e = 0;
    EXPECT_EQ(t.Open(&a), 1);  // the one free entry of an empty table
    EXPECT_EQ(t.Open(&b), 2);
    EXPECT_EQ(t.Open(&c), 3);
    EXPECT_EQ(t.Count(), 3);

    // Closing graph 2 of 3: the next one is graph 2 again.
    t.Close(2);
    EXPECT_EQ(t.NumberOf(&b), 0);
    EXPECT_EQ(t.Open(&d), 2);
    EXPECT_EQ(t.NumberOf(&d), 2);

    // Two gaps: the lower one first.
    t.Close(1);
    t.Close(2);
    EXPECT_EQ(t.Open(&e), 1);
    EXPECT_EQ(t.OpenForms(), (std::vector<void*>{&e, &c}));
    EXPECT_EQ(t.At(2)->free, true);
    EXPECT_EQ(t.At(4), nullptr);
    t.Close(0);  // outside the table: nothing happens
    t.Close(9);
    EXPECT_EQ(t.OpenForms().size(), 2u);
}

TEST(ViewForms, AllClosedLeavesOneFreeEntry) {
    ViewForms t;
    int forms[4];
    for (int& f : forms) t.Open(&f);
    t.At(3)->cursorDrawn = true;
    // Closed in any order, as the unloading of all views closes them.
    t.Close(3);
    EXPECT_EQ(t.Count(), 4);  // graph 4 still open above the gap
    t.Close(1);
    t.Close(4);
    t.Close(2);
    EXPECT_EQ(t.Count(), 1);
    EXPECT_TRUE(t.At(1)->free);
    EXPECT_FALSE(t.At(1)->cursorDrawn);
    EXPECT_EQ(t.Open(&forms[0]), 1);
    // A reopened number starts without the playback cursor drawn.
    t.Open(&forms[1]);
    t.Open(&forms[2]);
    EXPECT_FALSE(t.At(3)->cursorDrawn);
}

}  // namespace
}  // namespace tl
