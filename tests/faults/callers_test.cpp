// Careless callers. Every public function of the headers is called with every value of
// hostileValues.h for each of its parameters, of a new object and of one with content: before the
// engine's start, while it runs, on a driver without extensions, and after its end. Nothing may
// crash or hang, a frame can be drawn afterwards, and nothing is left of the objects.
//
// The functions are read from the headers while the program is built (publicFunctions.py), so that
// none is missing. What the headers leave to the caller is in `leftToTheCaller`, with the words of
// the header. To see the call that crashes: RAVOLT_TRACE_CALLS=1.

#include "ravolt.h"
#include "ravolt/shadowMatrixStack.h"
#include "tests/engine/resetEffects.h"
#include "tests/faults/callStates.h"
#include "tests/faults/calls.h"
#include "tests/faults/hostileValues.h"
#include "tests/faults/world.h"
#include "tests/support/engineFixture.h"
#include "tests/support/files.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <numeric>
#include <random>
#include <regex>
#include <string>
#include <tuple>
#include <utility>

// A request of all memory is refused as it is without the address sanitizer.
extern "C" [[gnu::visibility("default")]] const char *__asan_default_options() {
    return "allocator_may_return_null=1";
}

namespace ravolt::test {
namespace {

struct Exception {
    const char *function; // its name begins with this
    const char *header;
    const char *words; // of the header's comment
};

constexpr Exception leftToTheCaller[] = {
    {"RVNODE::load(", "RVNODE.h", "the caller must have checked its contents"},
    {"RVMESH::load(", "RVMESH.h", "the caller must have checked its contents"},
    {"RVLIGHT::load(", "RVLIGHT.h", "the caller must have checked its contents"},
    {"RVNODE::link(", "RVNODE.h", "Cycles are not detected"},
    {"zlfFree(", "zlf.h", "malloc and free with counters"},
    {"RVTERRAIN_INDEXBUFFER::draw(", "RVTERRAIN_INDEXTABLE.h", "from the arrays that are bound"},
};

const Exception *exceptionFor(const std::string &function) {
    for (const Exception &exception : leftToTheCaller)
        if (function.rfind(exception.function, 0) == 0)
            return &exception;
    return nullptr;
}

// --- The calls of one function

// The values of the parameters of a class's functions.
template <class Owner> struct ValuesFor {
    const World &world;
    Buffers &buffers;

    template <class T> std::vector<T> values() const {
        return hostileValues<Owner, T>(world, buffers);
    }
};

// zlfMalloc: the block is freed.
void invokeAndFree(void *(*function)(std::size_t), std::size_t bytes) { zlfFree(function(bytes)); }

template <class Owner, class Result, class... Arguments>
void callFunction(Session &session, Result (*function)(Arguments...)) {
    session.forEach([&](Prepared &prepared, std::size_t number) {
        const ValuesFor<OwnerOf<Owner>> source{prepared.world, prepared.buffers};
        const Combinations<ValuesFor<OwnerOf<Owner>>, std::decay_t<Arguments>...> combinations(
            source);
        auto arguments = combinations.at(number);
        if constexpr (std::is_same_v<decltype(function), void *(*)(std::size_t)>)
            invokeAndFree(function, std::get<0>(arguments));
        else
            invoke([&]() -> Result {
                return std::apply([&](auto &...each) -> Result { return function(each...); },
                                  arguments);
            });
        return number + 1 < combinations.count();
    });
}

// A new object: a registry owns it, or else `temporary`.
template <class Object> Object *newObject(std::unique_ptr<Object> &temporary) {
    if constexpr (std::is_same_v<Object, RVTERRAIN_COORDBUFFER>) {
        Z3MVECTOR2D coords[4];
        temporary = std::make_unique<Object>(coords, static_cast<unsigned short>(2));
    } else if constexpr (std::is_same_v<Object, RVTERRAIN_INDEXBUFFER>) {
        const unsigned short indices[3] = {0, 1, 2};
        temporary = std::make_unique<Object>(indices, 3u);
    } else if constexpr (std::is_default_constructible_v<Object>) {
        if constexpr (requires(Object object) { object.getId(); })
            return new Object;
        else
            temporary = std::make_unique<Object>();
    }
    return temporary.get();
}

template <class Object, class Result, class... Arguments, class Function>
void callMember(Session &session, Function function, bool fresh) {
    session.forEach([&](Prepared &prepared, std::size_t number) {
        const ValuesFor<OwnerOf<Object>> source{prepared.world, prepared.buffers};
        const Combinations<ValuesFor<OwnerOf<Object>>, std::decay_t<Arguments>...> combinations(
            source);
        auto arguments = combinations.at(number);
        std::unique_ptr<Object> temporary;
        Object *object = fresh ? newObject(temporary) : preparedObject<Object>(prepared.world);
        if (object)
            invoke([&]() -> Result {
                return std::apply(
                    [&](auto &...each) -> Result { return std::invoke(function, object, each...); },
                    arguments);
            });
        session.countObject(object);
        return object && number + 1 < combinations.count();
    });
}

template <class Object, class Result, class... Arguments, class Function>
void callMemberTwice(Session &session, Function function) {
    for (const bool fresh : {true, false})
        callMember<Object, Result, Arguments...>(session, function, fresh);
}
template <class Object, class Result, class... Arguments>
void callMembers(Session &session, Result (Object::*function)(Arguments...)) {
    callMemberTwice<Object, Result, Arguments...>(session, function);
}
template <class Object, class Result, class... Arguments>
void callMembers(Session &session, Result (Object::*function)(Arguments...) const) {
    callMemberTwice<Object, Result, Arguments...>(session, function);
}

// Functions like printf: NULL as the format, and hostile texts as the argument of "%s".
void callWithTexts(Session &session,
                   const std::function<void(World &, const char *, const char *)> &call) {
    session.forEach([&](Prepared &prepared, std::size_t number) {
        const std::vector<const char *> texts = hostileTexts();
        if (number == texts.size())
            call(prepared.world, nullptr, "");
        else if (texts[number])
            call(prepared.world, "%s", texts[number]);
        return number < texts.size();
    });
}

struct NoClass {};

void callWithTexts(Session &session, const std::string &function);

// What the rows of publicFunctions.py become.
#define FUNCTION(name, function, ...)                                                              \
    {name, false, [](Session &session) {                                                           \
         callFunction<NoClass>(session, static_cast<std::add_pointer_t<__VA_ARGS__>>(function));   \
     }},
#define STATIC(name, owner, function, ...)                                                         \
    {name, false, [](Session &session) {                                                           \
         callFunction<owner>(session,                                                              \
                             static_cast<std::add_pointer_t<__VA_ARGS__>>(&owner::function));      \
     }},
#define MEMBER(name, owner, function, ...)                                                         \
    {name, true, [](Session &session) {                                                            \
         callMembers<owner>(session,                                                               \
                            static_cast<std::type_identity_t<__VA_ARGS__>>(&owner::function));     \
     }},
#define VARIADIC(name, owner, function)                                                            \
    {name, false, [](Session &session) { callWithTexts(session, name); }},
#define VARIADIC_FUNCTION(name, function) VARIADIC(name, NoClass, function)

void callWithTexts(Session &session, const std::string &function) {
    callWithTexts(session, [&](World &world, const char *format, const char *text) {
        if (function.rfind("RVLABEL", 0) == 0)
            world.label->write(format, text);
        else if (function.rfind("RVWINDOW", 0) == 0)
            world.window->write(format, text);
        else if (function.rfind("RVFONT", 0) == 0)
            world.font->putString(1, 1, format, text);
        else if (function.rfind("zlfLogError", 0) == 0)
            zlfLogError(text, format, format, text);
        else if (function.rfind("zlfLog(", 0) == 0)
            zlfLog(format, text);
        else
            ADD_FAILURE() << "no call of " << function;
    });
}

const std::vector<Row> &allRows() {
    static const std::vector<Row> rows = {
#include "publicFunctions.inc"
    };
    return rows;
}

// --- The tests

using Callers = CallsInStates;

TEST_P(Callers, CauseNoHarm) {
    for (const Row &row : allRows()) {
        if (!isTested(row) || exceptionFor(row.name))
            continue;
        call(row);
        if (HasFailure())
            return;
    }
}

INSTANTIATE_TEST_SUITE_P(
    OfEveryFunction, Callers,
    testing::Combine(testing::Values(EngineState::neverStarted, EngineState::running,
                                     EngineState::onOldDriver, EngineState::withoutPrograms,
                                     EngineState::afterFree),
                     testing::ValuesIn(classesOf(allRows()))),
    nameOfCalls);

// The application deletes its objects in any order, and draws after each deletion. Nodes are
// unlinked before, as RVNODE.h demands.
class DeletionOrder : public SilentEngineTest {
  protected:
    void SetUp() override {
        settings.setShaders(true);
        SilentEngineTest::SetUp();
        writeWorldFiles();
        allEffectsOn();
    }
    void TearDown() override {
        resetEffects();
        SilentEngineTest::TearDown();
    }

    static void unlinkAll(RVNODE *node) {
        while (node->getNumberOfChildren())
            node->getChild(0)->unlink();
        if (node->getParent())
            node->unlink();
    }

    using Deletion = std::function<void()>;
    template <class T> static Deletion deletionOf(T *object) {
        return [object] {
            if constexpr (std::is_base_of_v<RVNODE, T>)
                unlinkAll(object);
            delete object;
        };
    }

    static std::vector<Deletion> resourcesOf(const World &world) {
        return {deletionOf(world.texture), deletionOf(world.material), deletionOf(world.shader),
                deletionOf(world.font),    deletionOf(world.mesh),     deletionOf(world.target)};
    }

    static std::vector<Deletion> everythingOf(const World &world) {
        std::vector<Deletion> all = resourcesOf(world);
        for (const Deletion &more :
             {deletionOf(world.camera), deletionOf(world.light), deletionOf(world.helper),
              deletionOf(world.emitter), deletionOf(world.dome), deletionOf(world.water),
              deletionOf(world.terrain), deletionOf(world.box), deletionOf(world.label),
              deletionOf(world.button), deletionOf(world.field), deletionOf(world.horizontal),
              deletionOf(world.vertical), deletionOf(world.window), deletionOf(world.clip),
              deletionOf(world.video)})
            all.push_back(more);
        return all;
    }

    // Creates the objects, with links between them, and deletes those of `order`.
    template <class List> void deleteIn(const std::vector<std::size_t> &order, const List &list) {
        const World world = makeWorld();
        world.mesh->setMaterial(world.material);
        RVMATERIAL::findByName("stone")->setShader(world.shader);
        world.emitter->setTexture(world.texture);
        world.box->setShader(world.shader);
        drawWorld(world);
        const std::vector<Deletion> deletions = list(world);
        for (const std::size_t index : order) {
            deletions[index]();
            drawWorld(world);
        }
        ASSERT_TRUE(restart());
    }
};

TEST_F(DeletionOrder, OfResourcesIsFree) {
    std::vector<std::size_t> order = {0, 1, 2, 3, 4};
    do
        deleteIn(order, resourcesOf);
    while (std::next_permutation(order.begin(), order.end()) && !HasFailure());
}

TEST_F(DeletionOrder, OfEverythingIsFree) {
    std::mt19937 random(1); // NOLINT(cert-msc51-cpp): the same orders in each run
    std::vector<std::size_t> order(22);
    std::iota(order.begin(), order.end(), 0);
    for (int number = 0; number < 50 && !HasFailure(); ++number) {
        std::shuffle(order.begin(), order.end(), random);
        SCOPED_TRACE(testing::PrintToString(order));
        deleteIn(order, everythingOf);
    }
}

// The exceptions are those that the headers name.
TEST(CallersExceptions, AreWordsOfTheHeaders) {
    for (const Exception &exception : leftToTheCaller) {
        std::string text =
            readText(std::string(RAVOLT_SOURCE "/include/ravolt/") + exception.header);
        text = std::regex_replace(text, std::regex("\n *// ?"), " ");
        EXPECT_NE(text.find(exception.words), std::string::npos) << exception.function;
        bool exists = false;
        for (const Row &row : allRows())
            exists = exists || exceptionFor(row.name) == &exception;
        EXPECT_TRUE(exists) << exception.function;
    }
}

} // namespace
} // namespace ravolt::test
