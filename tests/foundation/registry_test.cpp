#include "foundation/registry.h"

#include <cstdio>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace ravolt {
namespace {

// A class with a registry, as the engine's classes have one.
class Thing {
  public:
    explicit Thing(unsigned int number) : id(number) {
        std::snprintf(name, sizeof name, "thing %u", number);
        Registry<Thing>::append(first, last, this);
    }
    ~Thing() {
        Registry<Thing>::unlink(first, last, this);
        delete victim;
        ++deaths;
    }
    Thing(const Thing &) = default; // a memberwise copy: its links are those of the original

    Thing *victim = nullptr; // deleted by the destructor
    char name[256];

    static Thing *first, *last;
    static int deaths;

    // The numbers of all things, which must be the same from both ends.
    static std::vector<unsigned int> all() {
        std::vector<unsigned int> forwards, backwards;
        for (Thing *thing = first; thing; thing = thing->next)
            forwards.push_back(thing->id);
        for (Thing *thing = last; thing; thing = thing->previous)
            backwards.insert(backwards.begin(), thing->id);
        EXPECT_EQ(forwards, backwards);
        return forwards;
    }

  private:
    friend struct Registry<Thing>;
    unsigned int id;
    Thing *previous = nullptr, *next = nullptr;
};

Thing *Thing::first = nullptr;
Thing *Thing::last = nullptr;
int Thing::deaths = 0;

using Things = Registry<Thing>;
using Numbers = std::vector<unsigned int>;

class RegistryTest : public testing::Test {
  protected:
    RegistryTest() { Thing::deaths = 0; }
    ~RegistryTest() override { Things::cleanUp(Thing::first); }
};

TEST_F(RegistryTest, KeepsTheOrderOfCreation) {
    EXPECT_EQ(Thing::all(), Numbers());
    for (unsigned int i = 1; i <= 4; ++i)
        new Thing(i);
    EXPECT_EQ(Thing::all(), (Numbers{1, 2, 3, 4}));
    EXPECT_EQ(Things::count(Thing::first), 4u);
}

TEST_F(RegistryTest, LosesItsHead) {
    Thing *one = new Thing(1);
    new Thing(2);
    delete one;
    EXPECT_EQ(Thing::all(), Numbers{2});
    new Thing(3);
    EXPECT_EQ(Thing::all(), (Numbers{2, 3}));
}

TEST_F(RegistryTest, LosesItsTail) {
    new Thing(1);
    delete new Thing(2);
    EXPECT_EQ(Thing::all(), Numbers{1});
    new Thing(3);
    EXPECT_EQ(Thing::all(), (Numbers{1, 3}));
}

TEST_F(RegistryTest, LosesOneInTheMiddle) {
    new Thing(1);
    Thing *two = new Thing(2);
    new Thing(3);
    delete two;
    EXPECT_EQ(Thing::all(), (Numbers{1, 3}));
}

TEST_F(RegistryTest, LosesItsOnlyOne) {
    delete new Thing(1);
    EXPECT_EQ(Thing::first, nullptr);
    EXPECT_EQ(Thing::last, nullptr);
    new Thing(2);
    EXPECT_EQ(Thing::all(), Numbers{2});
}

TEST_F(RegistryTest, UnlinksTwiceWithoutHarm) {
    Thing *one = new Thing(1);
    new Thing(2);
    Things::unlink(Thing::first, Thing::last, one);
    EXPECT_EQ(Thing::all(), Numbers{2});
    Things::unlink(Thing::first, Thing::last, one);
    EXPECT_EQ(Thing::all(), Numbers{2});
    delete one;
    EXPECT_EQ(Thing::all(), Numbers{2});
}

TEST_F(RegistryTest, IsNotChangedByTheEndOfAMemberwiseCopy) {
    Thing *things[] = {new Thing(1), new Thing(2), new Thing(3)};
    for (Thing *thing : things) {
        { Thing copy(*thing); }
        EXPECT_EQ(Thing::all(), (Numbers{1, 2, 3}));
    }
    delete things[0];
    delete things[2];
    { Thing copy(*things[1]); }
    EXPECT_EQ(Thing::all(), Numbers{2}) << "the only one";
}

TEST_F(RegistryTest, FindsByNumber) {
    new Thing(1);
    Thing *two = new Thing(2);
    new Thing(2);
    EXPECT_EQ(Things::findById(Thing::first, 2), two) << "the first of two";
    EXPECT_EQ(Things::findById(Thing::first, 3), nullptr);
    EXPECT_EQ(Things::findById(nullptr, 1), nullptr);
}

TEST_F(RegistryTest, FindsByText) {
    new Thing(1);
    Thing *two = new Thing(2);
    new Thing(2);
    EXPECT_EQ(Things::findByText(Thing::first, &Thing::name, "thing 2"), two);
    EXPECT_EQ(Things::findByText(Thing::first, &Thing::name, "Thing 2"), nullptr);
    EXPECT_EQ(Things::findByText(Thing::first, &Thing::name, "thing"), nullptr);
    EXPECT_EQ(Things::findByText(Thing::first, &Thing::name, nullptr), nullptr);
}

TEST_F(RegistryTest, CleansUpAll) {
    EXPECT_EQ(Things::cleanUp(Thing::first), 0u);
    for (unsigned int i = 1; i <= 3; ++i)
        new Thing(i);
    EXPECT_EQ(Things::cleanUp(Thing::first), 3u);
    EXPECT_EQ(Thing::deaths, 3);
    EXPECT_EQ(Thing::first, nullptr);
    EXPECT_EQ(Thing::last, nullptr);
}

TEST_F(RegistryTest, CleansUpWhereADestructorDeletesItsSuccessor) {
    Thing *one = new Thing(1);
    one->victim = new Thing(2);
    new Thing(3);
    EXPECT_EQ(Things::cleanUp(Thing::first), 2u) << "what the destructor deleted is not counted";
    EXPECT_EQ(Thing::deaths, 3);
    EXPECT_EQ(Thing::first, nullptr);
}

TEST_F(RegistryTest, CleansUpWhereADestructorDeletesTheTail) {
    Thing *one = new Thing(1);
    new Thing(2);
    one->victim = new Thing(3);
    EXPECT_EQ(Things::cleanUp(Thing::first), 2u);
    EXPECT_EQ(Thing::deaths, 3);
    EXPECT_EQ(Thing::last, nullptr);
}

} // namespace
} // namespace ravolt
