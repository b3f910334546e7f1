// The linked lists of all objects of a class.

#include "foundation/registry.h"

#include <cstdio>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace ravolt {
namespace {

// A class with a registry, like the engine's classes.
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

TEST_F(RegistryTest, HasTheOrderOfCreationWhateverIsDeleted) {
    const std::pair<std::vector<std::size_t>, Numbers> rows[] = {
        {{}, {1, 2, 3}}, {{0}, {2, 3}}, {{2}, {1, 2}}, {{1}, {1, 3}},
        {{0, 1}, {3}},   {{2, 0}, {2}}, {{1, 2}, {1}}, {{0, 1, 2}, {}}};
    for (const auto &[deleted, rest] : rows) {
        EXPECT_EQ(Thing::all(), Numbers());
        Thing *things[] = {new Thing(1), new Thing(2), new Thing(3)};
        for (const std::size_t index : deleted)
            delete things[index];
        EXPECT_EQ(Thing::all(), rest);
        EXPECT_EQ(Things::count(Thing::first), rest.size());
        Numbers more = rest;
        more.push_back(4);
        new Thing(4);
        EXPECT_EQ(Thing::all(), more);
        Thing::deaths = 0;
        EXPECT_EQ(Things::cleanUp(Thing::first), more.size());
        EXPECT_EQ(Thing::deaths, static_cast<int>(more.size()));
        EXPECT_EQ(Thing::first, nullptr);
        EXPECT_EQ(Thing::last, nullptr);
    }
    EXPECT_EQ(Things::cleanUp(Thing::first), 0u);
}

TEST_F(RegistryTest, UnlinksTwiceWithoutHarm) {
    Thing *one = new Thing(1);
    new Thing(2);
    for (int times = 0; times < 2; ++times) {
        Things::unlink(Thing::first, Thing::last, one);
        EXPECT_EQ(Thing::all(), Numbers{2});
    }
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

TEST_F(RegistryTest, FindsTheFirstByNumberAndByText) {
    new Thing(1);
    Thing *two = new Thing(2);
    new Thing(2);
    EXPECT_EQ(Things::findById(Thing::first, 2), two);
    EXPECT_EQ(Things::findById(Thing::first, 3), nullptr);
    EXPECT_EQ(Things::findById(nullptr, 1), nullptr);
    EXPECT_EQ(Things::findByText(Thing::first, &Thing::name, "thing 2"), two);
    for (const char *text : {"Thing 2", "thing", static_cast<const char *>(nullptr)})
        EXPECT_EQ(Things::findByText(Thing::first, &Thing::name, text), nullptr);
}

// What the destructor deleted is not counted.
TEST_F(RegistryTest, CleansUpWhereADestructorDeletesAnother) {
    for (const std::size_t victim : {1u, 2u}) {
        Thing::deaths = 0;
        Thing *things[] = {new Thing(1), new Thing(2), new Thing(3)};
        things[0]->victim = things[victim];
        EXPECT_EQ(Things::cleanUp(Thing::first), 2u);
        EXPECT_EQ(Thing::deaths, 3);
        EXPECT_EQ(Thing::first, nullptr);
        EXPECT_EQ(Thing::last, nullptr);
    }
}

} // namespace
} // namespace ravolt
