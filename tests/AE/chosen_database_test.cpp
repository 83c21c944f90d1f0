// Which database a frame of the built module is drawn from, and when the file is opened.
#include "built_effect.h"

namespace {

/// Two databases, both with nothing but a header at first. The system's listing order decides which
/// is choice 1.
class ChosenDatabase : public BuiltEffect {
protected:
    ChosenDatabase() {
        add_database("a.stars", kHeader);
        add_database("b.stars", kHeader);
        first = listing()[0];
        last = listing()[1];
    }
    void choose(int choice) { host.values[16].u.pd.value = choice; }

    const std::string kLit = kHeader + kAhead;
    std::string first;
    std::string last;
};

}  // namespace

TEST_F(ChosenDatabase, IsTheFirstByDefaultOpenedAnewForEachFrame) {
    set_up();
    EXPECT_EQ(middle(), 0.0F);
    replace_database(first, kLit);
    EXPECT_GT(middle(), 0.0F) << "a file replaced on disk is seen";
    replace_database(first, kHeader);
    EXPECT_EQ(middle(), 0.0F);
}

TEST_F(ChosenDatabase, StaysOpenWhileItIsChosenByName) {
    replace_database(last, kLit);
    set_up();
    choose(2);
    EXPECT_GT(middle(), 0.0F);
    replace_database(last, kHeader);
    EXPECT_GT(middle(), 0.0F) << "the old file, from its first star";
    choose(1);
    EXPECT_EQ(middle(), 0.0F);
    choose(2);
    EXPECT_EQ(middle(), 0.0F) << "opened again, the new file";
}

TEST_F(ChosenDatabase, IsTheLastForAChoiceBeyondTheListOpenedAnewForEachFrame) {
    set_up();
    for (const int choice : {3, 24, INT32_MAX}) {
        choose(choice);
        replace_database(last, kLit);
        EXPECT_GT(middle(), 0.0F) << choice;
        replace_database(last, kHeader);
        EXPECT_EQ(middle(), 0.0F) << choice;
    }
}

TEST_F(ChosenDatabase, IsTheFirstForANegativeChoice) {
    replace_database(first, kLit);
    set_up();
    for (const int choice : {-1, -99, INT32_MIN + 1}) {
        choose(choice);
        EXPECT_GT(middle(), 0.0F) << choice;
    }
}

TEST_F(ChosenDatabase, ThatCannotBeReadLeavesTheOpenOne) {
    replace_database(first, kLit);
    set_up();
    choose(1);
    EXPECT_GT(middle(), 0.0F);
    replace_database(last, "");
    choose(2);
    EXPECT_EQ(middle(), -1.0F) << "untouched";
    replace_database(first, kHeader);
    choose(1);
    EXPECT_GT(middle(), 0.0F) << "still open";
}

TEST_F(ChosenDatabase, IsReadyForTheNextFrameAfterAFormatThatIsNotWritten) {
    replace_database(first, kLit);
    set_up();
    choose(1);
    FakeWorld world(kWidth, kHeight, PF_PixelFormat_BGRA32);
    host.input_world = &world;
    host.output_world = &world;
    EXPECT_EQ(pre_render(), 0);
    EXPECT_EQ(smart_render(), 0);
    EXPECT_TRUE(world.untouched());
    EXPECT_GT(middle(), 0.0F);
}
