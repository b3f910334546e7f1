// What all classes with a registry share: their objects in order of creation, found by name and by
// identifier, and their clean-up. The registries contain the engine's own objects, too.

#include "ravolt/RVANIM.h"
#include "ravolt/RVFBO.h"
#include "ravolt/RVFONT.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVNODE.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/RVVIDEO.h"
#include "tests/support/engineFixture.h"

#include <cstring>
#include <string>
#include <vector>

namespace ravolt::test {
namespace {

// A class: what its members are called, and the line of its clean-up, if it has one.
template <class Object, unsigned int (*number)()> struct Named {
    using Type = Object;
    static unsigned int count() { return number(); }
    static Object *first() { return Object::getFirst(); }
    static Object *next(const Object *object) { return object->getNext(); }
    static Object *previous(const Object *object) { return object->getPrevious(); }
    static char *name(Object *object) { return object->getName(); }
    static Object *find(const char *name) { return Object::findByName(name); }
};
template <class Object, unsigned int (*number)()> struct OfFile : Named<Object, number> {
    static char *name(Object *object) { return object->getFilename(); }
    static Object *find(const char *name) { return Object::findByFilename(name); }
};

struct Nodes : Named<RVNODE, RVNODE::getNumberOfNodes> {
    static constexpr const char *kind = "node", *released = " node(s) released @ RVNODE::cleanUp";
    static RVNODE *first() { return RVNODE::getFirstNode(); }
    static RVNODE *next(const RVNODE *node) { return node->getNextNode(); }
    static RVNODE *previous(const RVNODE *node) { return node->getPreviousNode(); }
};
struct Materials : Named<RVMATERIAL, RVMATERIAL::getNumberOfMaterials> {
    static constexpr const char *kind = "material", *released = " material(s) released";
};
struct Shaders : Named<RVSHADER, RVSHADER::getNumberOfShaders> {
    static constexpr const char *kind = "shader", *released = " shader(s) released";
};
struct Fonts : Named<RVFONT, RVFONT::getNumberOfFonts> {
    static constexpr const char *kind = "font", *released = " font(s) released";
};
struct Textures : OfFile<RVTEXTURE, RVTEXTURE::getNumberOfTextures> {
    static constexpr const char *kind = "texture", *released = " texture(s) released";
};
struct Anims : OfFile<RVANIM, RVANIM::getNumberOfAnims> {
    static constexpr const char *kind = "anim", *released = nullptr;
};
struct Videos : Named<RVVIDEO, RVVIDEO::getNumberOfVideos> {
    static constexpr const char *kind = "video", *released = nullptr;
    static RVVIDEO *find(const char *name) { return RVVIDEO::findByFilename(name); }
};

template <class Class> class Registry : public SilentEngineTest {
  protected:
    using Item = typename Class::Type;
    using List = std::vector<Item *>;

    Registry() { settings.setShaders(true); }

    void SetUp() override {
        SilentEngineTest::SetUp();
        engineOwn = all();
    }

    // Forwards; backwards it is the same.
    static List all() {
        List objects;
        for (Item *each = Class::first(); each; each = Class::next(each)) {
            EXPECT_EQ(Class::previous(each), objects.empty() ? nullptr : objects.back());
            objects.push_back(each);
        }
        EXPECT_EQ(Class::count(), objects.size());
        return objects;
    }

    // The engine's objects, and these after them.
    List with(const List &own) const {
        List objects = engineOwn;
        objects.insert(objects.end(), own.begin(), own.end());
        return objects;
    }

    static Item *named(const char *name) {
        auto *object = new Item;
        std::strcpy(Class::name(object), name);
        return object;
    }

    List engineOwn;
};

struct ClassName {
    template <class Class> static std::string GetName(int) { return Class::kind; }
};
using AllClasses = testing::Types<Nodes, Materials, Shaders, Fonts, Textures, Anims, Videos>;
TYPED_TEST_SUITE(Registry, AllClasses, ClassName);

TYPED_TEST(Registry, KeepsTheOrderOfCreation) {
    using Object = typename TypeParam::Type;
    using Objects = std::vector<Object *>;
    for (bool alone : {false, true}) { // after the engine's own objects, and in an empty registry
        if (alone) {
            Object::cleanUp();
            this->engineOwn.clear();
        }
        Objects own = {new Object, new Object, new Object, new Object};
        EXPECT_EQ(this->all(), this->with(own));
        for (std::ptrdiff_t index : {1, 0, 1, 0}) { // in the middle, the first, the last, the only
            delete own[static_cast<std::size_t>(index)];
            own.erase(own.begin() + index);
            EXPECT_EQ(this->all(), this->with(own));
        }
        own = {new Object};
        EXPECT_EQ(this->all(), this->with(own));
        delete own[0];
    }
}

TYPED_TEST(Registry, FindsTheOldestOfANameLetterByLetter) {
    EXPECT_EQ(TypeParam::find("twin"), nullptr);
    this->named("other");
    auto *first = this->named("twin"), *second = this->named("twin");
    EXPECT_EQ(TypeParam::find("twin"), first);
    for (const char *name : {"Twin", "twi", static_cast<const char *>(nullptr)})
        EXPECT_EQ(TypeParam::find(name), nullptr);
    delete first;
    EXPECT_EQ(TypeParam::find("twin"), second);
    EXPECT_NOTHING_LOGGED();
}

TYPED_TEST(Registry, FindsByIdentifierWhichIsTheNameOfANewObject) {
    using Object = typename TypeParam::Type;
    auto *first = new Object, *second = new Object, *third = new Object;
    for (Object *each : {first, second, third}) {
        const std::string number = std::to_string(each->getId());
        const std::string name = std::string("[") + TypeParam::kind + " " + number + "]";
        EXPECT_EQ(TypeParam::name(each), name);
        EXPECT_EQ(TypeParam::find(name.c_str()), each);
        EXPECT_EQ(Object::findById(each->getId()), each);
        EXPECT_GE(each->getId(), 1u);
        EXPECT_LE(each->getId(), 65535u);
    }
    EXPECT_EQ(Object::findById(0), nullptr);
    EXPECT_EQ(Object::findById(65535), nullptr);
    const unsigned int id = second->getId();
    delete second;
    EXPECT_EQ(Object::findById(id), nullptr);
    EXPECT_EQ((new Object)->getId(), id);
    EXPECT_NOTHING_LOGGED();
}

TYPED_TEST(Registry, CleanUpDeletesAllAndLogsTheirNumber) {
    using Object = typename TypeParam::Type;
    const unsigned int id = this->named("one")->getId();
    new Object;
    const std::string number = std::to_string(TypeParam::count());
    const LogMark mark = markLog();
    EXPECT_TRUE(Object::cleanUp());
    const std::vector<std::string> lines = linesSince(mark);
    if (TypeParam::released)
        EXPECT_EQ(lines.back(), "   " + number + TypeParam::released);
    else
        EXPECT_TRUE(lines.empty());
    markLog();
    EXPECT_EQ(TypeParam::first(), nullptr);
    EXPECT_EQ(TypeParam::count(), 0u);
    EXPECT_EQ(TypeParam::find("one"), nullptr);
    EXPECT_EQ(Object::findById(id), nullptr);
    EXPECT_FALSE(Object::cleanUp());
    EXPECT_NOTHING_LOGGED();
}

// --- Names that are set

template <class Class> class SetName : public Registry<Class> {};
using NamedClasses = testing::Types<Nodes, Materials, Shaders, Fonts>;
TYPED_TEST_SUITE(SetName, NamedClasses, ClassName);

TYPED_TEST(SetName, IgnoresNullAndWhatDoesNotFitItsBuffer) {
    auto *object = this->named("old");
    object->setName(std::string(256, 'x').c_str());
    EXPECT_STREQ(object->getName(), "old");
    object->setName(nullptr);
    EXPECT_STREQ(object->getName(), "old");
    object->setName(std::string(255, 'x').c_str());
    EXPECT_EQ(object->getName(), std::string(255, 'x'));
    object->setName(object->getName() + 250);
    EXPECT_STREQ(object->getName(), "xxxxx") << "a part of itself";
    object->setName("");
    EXPECT_STREQ(object->getName(), "");
    EXPECT_NOTHING_LOGGED();
}

// --- Folders

struct Folder {
    const char *name;
    void (*set)(const char *);
    char *(*get)();
};
void PrintTo(const Folder &folder, std::ostream *out) { *out << folder.name; }

class Folders : public RecorderTest, public testing::WithParamInterface<Folder> {};

TEST_P(Folders, AreCutAtTheirBufferAndEmptiedByNull) {
    const auto &[name, set, get] = GetParam();
    set("data/");
    EXPECT_STREQ(get(), "data/");
    set(std::string(255, 'p').c_str());
    EXPECT_EQ(get(), std::string(255, 'p'));
    set(std::string(300, 'q').c_str());
    EXPECT_EQ(get(), std::string(255, 'q'));
    set(nullptr);
    EXPECT_STREQ(get(), "");
}

INSTANTIATE_TEST_SUITE_P(OfTheClasses, Folders,
                         testing::Values(Folder{"fonts", RVFONT::setPath, RVFONT::getPath},
                                         Folder{"scenes", RAVOLT::setRVEPath, RAVOLT::getRVEPath},
                                         Folder{"clips", RVANIM::setRVAPath, RVANIM::getRVAPath},
                                         Folder{"videos", RVVIDEO::setMPGPath, RVVIDEO::getMPGPath},
                                         Folder{"textures", RVTEXTURE::setPath, RVTEXTURE::getPath},
                                         Folder{"shaders", RVSHADER::setPath, RVSHADER::getPath}),
                         [](const auto &each) { return std::string(each.param.name); });

} // namespace
} // namespace ravolt::test
