// What boxes draw: the arrays of their rectangles, the state of OpenGL and the scissor.

#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSHADER.h"
#include "tests/gui/drawnBoxes.h"
#include "tests/gui/widgetTest.h"

#include <climits>
#include <ostream>

using namespace ravolt::test;

namespace {

class BoxDrawing : public WidgetTest {
  protected:
    void SetUp() override {
        WidgetTest::SetUp();
        box = addBox(0, 0, 10, 8);
        box->setColor(0.5f, 0.25f, 1, 0.75f);
    }

    std::vector<Drawing> draw(bool expected = true) {
        return drawingsOf([&] { EXPECT_EQ(box->render(&element), expected); });
    }
    Calls calls() {
        return callsOf([this] { box->render(&element); });
    }

    RVBOX *box = nullptr;
    RVELEMENT element;
};

// Two rings of a box of 10 by 8, with the brightness of each rectangle.
struct Strip {
    float x1, y1, x2, y2, raised, sunken;
};
constexpr Strip strips[] = {
    {1, 0, 9, 1, 1.3f, 0.7f},  {0, 1, 1, 7, 1.3f, 0.7f},  {1, 8, 9, 7, 0.7f, 1.3f},
    {10, 1, 9, 7, 0.7f, 1.3f}, {0, 0, 1, 1, 1.6f, 0.4f},  {0, 8, 1, 7, 1, 1},
    {10, 0, 9, 1, 1, 1},       {10, 8, 9, 7, 0.4f, 1.6f}, {2, 1, 8, 2, 1.3f, 0.7f},
    {1, 2, 2, 6, 1.3f, 0.7f},  {2, 7, 8, 6, 0.7f, 1.3f},  {9, 2, 8, 6, 0.7f, 1.3f},
    {1, 1, 2, 2, 1.6f, 0.4f},  {1, 7, 2, 6, 1, 1},        {9, 1, 8, 2, 1, 1},
    {9, 7, 8, 6, 0.4f, 1.6f},
};

TEST_F(BoxDrawing, DrawsItsFillAndItsBorderRaisedOrSunken) {
    box->setThickness(2);
    for (const bool clicked : {false, true}) {
        SCOPED_TRACE(clicked ? "sunken" : "raised");
        box->setClickedStatus(clicked);
        const float fill = clicked ? 0.9f : 1;
        std::vector<Quad> expected{{0, 0, 10, 8, {0.5f * fill, 0.25f * fill, fill, 0.75f}}};
        for (const Strip &s : strips) {
            const float factor = clicked ? s.sunken : s.raised;
            expected.push_back(
                {s.x1, s.y1, s.x2, s.y2, {0.5f * factor, 0.25f * factor, factor, 0.5f}});
        }
        EXPECT_EQ(quadsOf(draw()), expected);
    }
}

TEST_F(BoxDrawing, DrawsOneRectangleWithoutThickness) {
    box->setThickness(0);
    EXPECT_EQ(quadsOf(draw()), (std::vector<Quad>{{0, 0, 10, 8, {0.5f, 0.25f, 1, 0.75f}}}));
    box->setThickness(1);
    EXPECT_EQ(calls().count("glDrawArrays"), 9u);
    box->setThickness(~0u);
    EXPECT_EQ(calls().count("glDrawArrays"), 1u + 8 * 4096) << "at most";
}

TEST_F(BoxDrawing, GivesEachRectangleItsTextureCoordinates) {
    box->setThickness(1);
    box->setBoxCoords(RVBOXCOORD(0.5f, 0.25f, true));
    const std::vector<Drawing> drawings = draw();
    ASSERT_EQ(drawings.size(), 9u);
    for (const Drawing &drawing : drawings) {
        std::vector<float> coords;
        for (const DrawnVertex &vertex : drawing.vertices)
            coords.insert(coords.end(), {vertex.u, vertex.v});
        EXPECT_EQ(coords, (std::vector<float>{0, 0, 0.5f, 0, 0, 0.25f, 0.5f, 0.25f}));
    }
}

TEST_F(BoxDrawing, DrawsNothingWhileItIsNotShown) {
    box->setDisplayStatus(false);
    EXPECT_EQ(callsOf([this] { EXPECT_FALSE(box->render(&element)); }), Calls());
}

TEST_F(BoxDrawing, LoadsTheMatrixOfItsElementAndPointsAtPackedFloats) {
    box->setThickness(0);
    element.getMatrix()->setTranslation(3, 4, 0);
    EXPECT_TRUE(
        calls().haveInOrder({{"glLoadMatrixf", 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 3, 4, 0, 1},
                             {"glVertexPointer", 2, GL_FLOAT, 0, anyAddress},
                             {"glColorPointer", 4, GL_FLOAT, 0, anyAddress},
                             {"glTexCoordPointer", 2, GL_FLOAT, 0, anyAddress},
                             {"glDrawArrays", GL_TRIANGLE_STRIP, 0, 4}}));
    EXPECT_FALSE(callsOf([this] { EXPECT_TRUE(box->render(nullptr)); }).contains("glLoadMatrixf"));
}

TEST_F(BoxDrawing, SizesBeyondAllNumbersAreDrawn) {
    box->setSizes(INT_MIN, INT_MAX);
    box->setThickness(1);
    const std::vector<Quad> quads = quadsOf(draw());
    ASSERT_EQ(quads.size(), 9u);
    EXPECT_EQ(quads[0].x2, static_cast<float>(INT_MIN));
    EXPECT_EQ(quads[1].x2, static_cast<float>(INT_MIN));
    EXPECT_EQ(quads[2].y2, static_cast<float>(INT_MAX));
}

// --- State

// What is on at a draw call, by the calls before it.
struct State {
    bool textured = false, blended = false;
    double program = 0;
    friend bool operator==(const State &, const State &) = default;
    friend void PrintTo(const State &state, std::ostream *out) {
        *out << (state.textured ? "textured" : "plain") << (state.blended ? " blended" : "")
             << " with program " << state.program;
    }
};

std::vector<State> statesAtDraws(const Calls &calls) {
    std::vector<State> states;
    State state;
    for (const Call &call : calls) {
        if (call.name == "glEnable" || call.name == "glDisable") {
            if (call.arguments[0] == GL_TEXTURE_2D)
                state.textured = call.name == "glEnable";
            if (call.arguments[0] == GL_BLEND)
                state.blended = call.name == "glEnable";
        } else if (call.name == "glUseProgramObjectARB") {
            state.program = call.arguments[0];
        } else if (call.name == "glDrawArrays") {
            states.push_back(state);
        }
    }
    return states;
}

class BoxState : public BoxDrawing {
  protected:
    BoxState() { settings.setShaders(true); }

    std::vector<State> states() {
        RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
        RVOPENGL::blendingOff();
        RVSHADER::disable();
        return statesAtDraws(calls());
    }
};

TEST_F(BoxState, HasTextureProgramAndBlendingInTheFillAndOnlyBlendingInTheBorder) {
    RVTEXTURE *const texture = new RVTEXTURE;
    ASSERT_TRUE(texture->create(4, 4, 3));
    RVSHADER *const program = RVSHADER::getFirst();
    ASSERT_NE(program, nullptr) << "a built-in one";
    for (RVTEXTURE *const itsTexture : {texture, static_cast<RVTEXTURE *>(nullptr)})
        for (RVSHADER *const itsProgram : {program, static_cast<RVSHADER *>(nullptr)})
            for (const bool opaque : {true, false}) {
                SCOPED_TRACE(testing::Message() << "texture " << itsTexture << " program "
                                                << itsProgram << " opaque " << opaque);
                EXPECT_TRUE(box->setTexture(itsTexture));
                EXPECT_TRUE(box->setShader(itsProgram));
                box->setColor(1, 1, 1, opaque ? 1 : 0.999f);
                const auto check = [&](unsigned int thickness) {
                    box->setThickness(thickness);
                    const std::vector<State> found = states();
                    ASSERT_EQ(found.size(), 1 + 8 * thickness);
                    const double number = found[0].program;
                    EXPECT_EQ(number != 0, itsProgram != nullptr);
                    std::vector<State> expected(1 + 8 * thickness, {false, true, number});
                    expected[0] = {itsTexture != nullptr, !opaque, number};
                    EXPECT_EQ(found, expected);
                };
                check(1);
                check(0);
                if (itsTexture) {
                    EXPECT_FALSE(calls().contains(Call("glDisable", GL_TEXTURE_2D)))
                        << "without a border";
                }
            }
}

TEST_F(BoxState, IsDrawnWithoutAProgramThatWasDeleted) {
    RVSHADER *const program = new RVSHADER;
    box->setShader(program);
    delete program;
    box->setThickness(0);
    EXPECT_EQ(states(), (std::vector<State>{{false, true, 0}}));
}

// --- Scissor

Calls scissorCalls(const Calls &calls) {
    return calls.named({"glScissor", "glEnable", "glDisable"}).where([](const Call &call) {
        return call.name == "glScissor" || call.arguments[0] == GL_SCISSOR_TEST;
    });
}

TEST_F(BoxDrawing, IsCutAtTheFirstWindowAroundItOrAtTheApplicationsWindow) {
    box->setThickness(0);
    const auto scissor = [](RVBOX *drawn) {
        return scissorCalls(callsOf([&] { drawn->render(nullptr); }));
    };
    EXPECT_EQ(scissor(box), (Calls{{"glScissor", 0, 0, width, height}})) << "set, but not on";
    RVWINDOW *const outer = add(new RVWINDOW, 1, 2);
    RVWINDOW *const window = add(new RVWINDOW, 10.75f, 20.75f, outer);
    window->setSizes(30, 40);
    RVBOX *const inside = addBox(5, 5, 10, 10, addBox(0, 0, 10, 10, window));
    inside->setThickness(0);
    const Calls cut{{"glEnable", GL_SCISSOR_TEST},
                    {"glScissor", 11, height - 22 - 40, 30, 40},
                    {"glDisable", GL_SCISSOR_TEST}};
    EXPECT_EQ(scissor(inside), cut);
    EXPECT_EQ(scissorCalls(callsOf([&] { window->RVBOX::render(nullptr); })), cut) << "itself";
    inside->setScissorStatus(false);
    EXPECT_EQ(scissor(inside), Calls());
}

} // namespace
