// Careless callers of the kit. Every public function of its headers is called like those of the
// engine (callers_test.cpp): with hostile values of each parameter, of a new object and of one with
// content, in each state of the engine. The object is used as an application does in a frame
// afterwards, and cameras have finite numbers then, as their header promises.
//
// To see the call that crashes: RAVOLT_TRACE_CALLS=1.

#include "ravolt/kit.h"
#include "tests/faults/callStates.h"
#include "tests/faults/calls.h"
#include "tests/faults/hostileValues.h"
#include "tests/support/files.h"

#include <SDL.h>

#include <cfloat>
#include <climits>
#include <cmath>
#include <memory>

namespace ravolt::test {
namespace {

using kit::Camera, kit::ClipOptions, kit::ClipPlayer, kit::FlyCamera, kit::FrameStatistics,
    kit::Input, kit::OrbitCamera, kit::Overlay, kit::Pick, kit::Picker, kit::Ray, kit::Screenshot,
    kit::SmoothedValue, kit::TerrainHeights, kit::WalkCamera;
using KitPixel = kit::Pixel;
using KitWindow = kit::Window;
using Filter = Input::Filter;

// --- The values of the kit's parameters

std::vector<SDL_Event> hostileEvents() {
    std::vector<SDL_Event> events;
    const auto add = [&](Uint8 type, const auto &change) {
        SDL_Event event = {};
        event.type = type;
        change(event);
        events.push_back(event);
    };
    for (const SDLKey key : {SDLK_F3, SDLK_w, SDLK_LAST, static_cast<SDLKey>(511)})
        for (const Uint8 type : {SDL_KEYDOWN, SDL_KEYUP})
            add(type, [&](SDL_Event &event) {
                event.key.keysym.sym = key;
                event.key.keysym.unicode = 0xffff;
            });
    for (const Sint16 place : {SHRT_MAX, SHRT_MIN})
        add(SDL_MOUSEMOTION, [&](SDL_Event &event) {
            event.motion.x = event.motion.y = static_cast<Uint16>(place);
            event.motion.xrel = event.motion.yrel = place;
        });
    for (const int button : {1, 0, 4, 5, 32, 255})
        add(SDL_MOUSEBUTTONDOWN,
            [&](SDL_Event &event) { event.button.button = static_cast<Uint8>(button); });
    for (const int size : {100, 0, -1, INT_MAX, INT_MIN})
        add(SDL_VIDEORESIZE, [&](SDL_Event &event) { event.resize.w = event.resize.h = size; });
    for (int type = 0; type < 256; type += 5)
        add(static_cast<Uint8>(type), [](const SDL_Event &) {});
    return events;
}

std::vector<double> hostileDoubles() {
    std::vector<double> values(hostileFloats().begin(), hostileFloats().end());
    values.insert(values.end(), {DBL_MAX, -DBL_MAX, DBL_MIN, 1e-9, 89.9, 1e6, 1e20});
    return values;
}

std::vector<std::string> hostileStrings() {
    std::vector<std::string> texts = {std::string("a\0b", 3), std::string(100'000, '\n')};
    for (const char *text : hostileTexts())
        texts.emplace_back(text ? text : "");
    return texts;
}

std::vector<ClipOptions> hostileOptions() {
    std::vector<ClipOptions> options(1);
    for (const float value : hostileFloats()) {
        options.push_back({value, 1, true, 0, false});
        options.push_back({30, value, false, 0, true});
        options.push_back({30, 1, true, value, false});
    }
    return options;
}

// What the functions of an object get by reference, alive as long as the object is.
struct Others {
    RVCAMERA *view = nullptr;
    std::unique_ptr<FlyCamera> camera = std::make_unique<FlyCamera>();
    std::unique_ptr<Input> input = std::make_unique<Input>();
    std::unique_ptr<Overlay> overlay = std::make_unique<Overlay>();

    explicit Others(const World &world) : view(world.camera) {
        for (const SDL_Event &event : hostileEvents())
            if (event.type != SDL_QUIT)
                input->handle(event);
    }
};

// Parameters of these classes are references.
template <class T>
constexpr bool isReference = std::is_base_of_v<Camera, T> || std::is_same_v<T, RVCAMERA> ||
                             std::is_same_v<T, Input> || std::is_same_v<T, Overlay>;

template <class Parameter>
using Stored = std::conditional_t<isReference<std::remove_cvref_t<Parameter>>,
                                  std::remove_cvref_t<Parameter> *, std::remove_cvref_t<Parameter>>;

template <class Parameter> Parameter passed(Stored<Parameter> &value) {
    if constexpr (isReference<std::remove_cvref_t<Parameter>>)
        return *value;
    else
        return static_cast<Parameter>(value);
}

struct Source {
    const World &world;
    Buffers &buffers;
    Others &others;

    template <class T> std::vector<T> values() const {
        if constexpr (std::is_same_v<T, double>)
            return hostileDoubles();
        else if constexpr (std::is_same_v<T, std::size_t>)
            return {0, 1, 2, 1000, SIZE_MAX};
        else if constexpr (std::is_same_v<T, std::string>)
            return hostileStrings();
        else if constexpr (std::is_same_v<T, std::vector<std::string>>)
            return {{"bone"}, {}, {""}, hostileStrings(), {"bone", "bone", "[root]"}};
        else if constexpr (std::is_same_v<T, std::vector<unsigned char>>)
            return {std::vector<unsigned char>(3), {}, std::vector<unsigned char>(48)};
        else if constexpr (std::is_same_v<T, SDL_Event>)
            return hostileEvents();
        else if constexpr (std::is_same_v<T, KitPixel>)
            return {{1, 1},
                    {0, 0},
                    {-1, -1},
                    {INT_MAX, INT_MAX},
                    {INT_MIN, INT_MIN},
                    {INT_MAX, INT_MIN}};
        else if constexpr (std::is_same_v<T, ClipOptions>)
            return hostileOptions();
        else if constexpr (std::is_same_v<T, Filter>)
            return {[](const SDL_Event &) { return false; }, nullptr,
                    [](const SDL_Event &) { return true; }};
        else if constexpr (std::is_same_v<T, std::function<void()>>)
            return {[] { RAVOLT::clear(true, true, false); }, nullptr, [] { RAVOLT::free(); }};
        else if constexpr (std::is_same_v<T, std::function<void(const std::string &)>>)
            return {[](const std::string &) {}, nullptr};
        else if constexpr (std::is_same_v<T, std::function<float(float, float)>>)
            return {[](float x, float z) { return x + z; }, nullptr,
                    [](float, float) { return std::nanf(""); },
                    [](float x, float) { return x > 0 ? FLT_MAX : -HUGE_VALF; }};
        else if constexpr (std::is_same_v<T, RVCAMERA *>)
            return {others.view};
        else if constexpr (std::is_same_v<T, Camera *>)
            return {others.camera.get()};
        else if constexpr (std::is_same_v<T, Input *>)
            return {others.input.get()};
        else if constexpr (std::is_same_v<T, Overlay *>)
            return {others.overlay.get()};
        else if constexpr (std::is_same_v<T, const RVANIM *> || std::is_same_v<T, RVANIM *>)
            return {world.clip, nullptr};
        else
            return hostileValues<RVNODE, T>(world, buffers);
    }
};

// --- The objects

template <class Object> std::unique_ptr<Object> newKitObject() {
    return std::make_unique<Object>();
}
template <> std::unique_ptr<Camera> newKitObject() { return std::make_unique<OrbitCamera>(); }
template <> std::unique_ptr<ClipPlayer> newKitObject() {
    return std::make_unique<ClipPlayer>(nullptr);
}
template <> std::unique_ptr<FrameStatistics> newKitObject() {
    return std::make_unique<FrameStatistics>(0, -1);
}
template <> std::unique_ptr<SmoothedValue> newKitObject() {
    return std::make_unique<SmoothedValue>(std::nan(""), HUGE_VAL);
}
template <> std::unique_ptr<WalkCamera> newKitObject() {
    return std::make_unique<WalkCamera>(
        [](double x, double) { return x > 1 ? HUGE_VAL : x * 1e30; }, std::nan(""));
}

template <class Object> std::unique_ptr<Object> preparedKitObject(const Source &) {
    return std::make_unique<Object>();
}
template <> std::unique_ptr<Camera> preparedKitObject(const Source &) {
    auto camera = std::make_unique<WalkCamera>();
    camera->move(1, 1);
    return camera;
}
template <> std::unique_ptr<ClipPlayer> preparedKitObject(const Source &source) {
    auto player = std::make_unique<ClipPlayer>(source.world.root);
    player->addLayer({"bone"});
    player->play(source.world.clip);
    player->play(source.world.clip, {}, 1);
    player->addEvent(source.world.clip, 0, "start");
    return player;
}
template <> std::unique_ptr<FrameStatistics> preparedKitObject(const Source &) {
    auto statistics = std::make_unique<FrameStatistics>(SIZE_MAX);
    for (const float seconds : hostileFloats())
        statistics->add(seconds);
    statistics->show(true);
    return statistics;
}
template <> std::unique_ptr<Input> preparedKitObject(const Source &source) {
    return std::make_unique<Input>(*source.others.input);
}
template <> std::unique_ptr<Overlay> preparedKitObject(const Source &source) {
    return std::make_unique<Overlay>(source.world.font);
}
template <> std::unique_ptr<Picker> preparedKitObject(const Source &) {
    auto picker = std::make_unique<Picker>();
    picker->setGround([](float x, float) { return x; });
    return picker;
}
template <> std::unique_ptr<Screenshot> preparedKitObject(const Source &) {
    auto picture = std::make_unique<Screenshot>();
    picture->setPixels(4, 4, std::vector<unsigned char>(48));
    return picture;
}
template <> std::unique_ptr<SmoothedValue> preparedKitObject(const Source &) {
    return std::make_unique<SmoothedValue>(1, 10);
}
template <> std::unique_ptr<TerrainHeights> preparedKitObject(const Source &) {
    auto heights = std::make_unique<TerrainHeights>();
    heights->load("land.geo");
    return heights;
}
template <> std::unique_ptr<WalkCamera> preparedKitObject(const Source &) {
    return std::make_unique<WalkCamera>();
}

// --- A frame with the object

void expectFinite(const Z3MVECTOR3D &vector) {
    EXPECT_TRUE(std::isfinite(vector.x) && std::isfinite(vector.y) && std::isfinite(vector.z))
        << vector.x << ", " << vector.y << ", " << vector.z;
}

void useInFrame(Camera &camera, const Source &source) {
    camera.handle(*source.others.input);
    camera.turn(1, 1);
    for (const double seconds : {0.1, 100.0, 100.0})
        camera.update(seconds);
    camera.apply(*source.world.camera);
    expectFinite(camera.getPosition());
    expectFinite(camera.getForward());
    EXPECT_TRUE(std::isfinite(camera.getYaw()) && std::isfinite(camera.getPitch()));
}
void useInFrame(ClipPlayer &player, const Source &) {
    player.update(0.02f);
    player.update(3600);
}
void useInFrame(FrameStatistics &statistics, const Source &source) {
    statistics.add(0.01f);
    statistics.draw(*source.others.overlay);
    EXPECT_TRUE(std::isfinite(statistics.getMean()));
}
void useInFrame(Input &input, const Source &) {
    input.manageGUI();
    input.getMotion();
    input.getDrag();
    input.getPointer();
    input.beginFrame();
}
void useInFrame(Overlay &overlay, const Source &source) {
    overlay.text(1, 1, "a text");
    overlay.picture(source.world.texture, 1, 1);
}
void useInFrame(Picker &picker, const Source &) { picker.pick(3, 4); }
void useInFrame(Screenshot &picture, const Source &) {
    EXPECT_EQ(picture.getPixels().size(), 3 * static_cast<std::size_t>(picture.getWidth()) *
                                              static_cast<std::size_t>(picture.getHeight()));
    picture.save("picture.png");
}
void useInFrame(SmoothedValue &value, const Source &) {
    value.advance(0.1);
    value.advance(DBL_MAX);
}
void useInFrame(TerrainHeights &heights, const Source &) { heights.at(1, 1); }
void useInFrame(KitWindow &window, const Source &) { window.isFullScreen(); }
void useInFrame(Pick &, const Source &) {}

// --- The table

template <class Result, class... Parameters, class Call>
bool callWith(const Source &source, std::size_t number, const Call &call) {
    const Combinations<Source, Stored<Parameters>...> combinations(source);
    auto arguments = combinations.at(number);
    invoke([&]() -> Result {
        return std::apply(
            [&](Stored<Parameters> &...each) -> Result {
                return call(passed<Parameters>(each)...);
            },
            arguments);
    });
    return number + 1 < combinations.count();
}

template <class Result, class... Parameters>
void callStatic(Session &session, Result (*function)(Parameters...)) {
    session.forEach([&](Prepared &prepared, std::size_t number) {
        Others others(prepared.world);
        return callWith<Result, Parameters...>({prepared.world, prepared.buffers, others}, number,
                                               function);
    });
}

template <class Object, class Result, class... Parameters, class Function>
void callMember(Session &session, Function function) {
    for (const bool fresh : {true, false})
        session.forEach([&](Prepared &prepared, std::size_t number) {
            Others others(prepared.world);
            const Source source{prepared.world, prepared.buffers, others};
            const std::unique_ptr<Object> object =
                fresh ? newKitObject<Object>() : preparedKitObject<Object>(source);
            session.countObject(object.get());
            const bool more =
                callWith<Result, Parameters...>(source, number, [&](Parameters... each) -> Result {
                    return std::invoke(function, *object, static_cast<Parameters &&>(each)...);
                });
            useInFrame(*object, source);
            return more;
        });
}
template <class Object, class Result, class... Parameters>
void callMembers(Session &session, Result (Object::*function)(Parameters...)) {
    callMember<Object, Result, Parameters...>(session, function);
}
template <class Object, class Result, class... Parameters>
void callMembers(Session &session, Result (Object::*function)(Parameters...) const) {
    callMember<Object, Result, Parameters...>(session, function);
}

// The class `Window` of the table.
namespace table {

using Window = KitWindow;
using Pixel = KitPixel;

// What the rows of publicFunctions.py become.
#define STATIC(name, owner, function, ...)                                                         \
    {name, false, [](Session &session) {                                                           \
         callStatic(session, static_cast<std::add_pointer_t<__VA_ARGS__>>(&owner::function));      \
     }},
#define MEMBER(name, owner, function, ...)                                                         \
    {name, true, [](Session &session) {                                                            \
         callMembers<owner>(session,                                                               \
                            static_cast<std::type_identity_t<__VA_ARGS__>>(&owner::function));     \
     }},

const std::vector<Row> &allRows() {
    static const std::vector<Row> rows = {
#include "kitFunctions.inc"
    };
    return rows;
}

} // namespace table

using KitCallers = CallsInStates;

TEST_P(KitCallers, CauseNoHarm) {
    for (const Row &row : table::allRows())
        if (isTested(row) && !HasFailure())
            call(row);
}

INSTANTIATE_TEST_SUITE_P(
    OfEveryFunction, KitCallers,
    testing::Combine(testing::Values(EngineState::neverStarted, EngineState::running,
                                     EngineState::onOldDriver, EngineState::withoutPrograms,
                                     EngineState::afterFree),
                     testing::ValuesIn(classesOf(table::allRows()))),
    nameOfCalls);

} // namespace
} // namespace ravolt::test
