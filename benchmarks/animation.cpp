// Characters: skinning their vertices and drawing them, on the processor and by a program, beside a
// hand-written loop of the same arithmetic over plain arrays; and a clip applied to a tree beside
// the same search over plain nodes.

#include "benchScene.h"
#include "characters.h"
#include "handMeshes.h"

#include "ravolt/RAVOLT.h"
#include "ravolt/RVANIM.h"
#include "ravolt/RVMESH.h"
#include "ravolt/RVNODE.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSETTINGS.h"
#include "ravolt/RVSHADER.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace {

using bench::bonesOfCharacter, bench::numberOfCharacters;

constexpr bench::Matrix identity = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

// The characters of the scene, drawn twice: the skeletons' cache is filled.
struct Characters {
    bench::Scene scene;

    explicit Characters(bool programs) {
        bench::startEngine(programs);
        if (programs)
            RVSETTINGS::forceShadersOn();
        scene = bench::makeCharacterScene();
        bench::drawByEngine(scene);
        bench::drawByEngine(scene);
    }
    ~Characters() { bench::destroy(scene); }
};

// As many figures with arrays of their own as there are characters.
struct HandCharacters {
    std::vector<bench::HandFigure> figures;
    std::vector<bench::Posed> posed;
    std::vector<std::array<bench::Matrix, bonesOfCharacter>> boneMatrices;

    HandCharacters()
        : figures(numberOfCharacters), posed(numberOfCharacters), boneMatrices(numberOfCharacters) {
        for (int i = 0; i < numberOfCharacters; ++i)
            figures[i].pose(boneMatrices[i].data());
    }
};

// What the program reads: its object, uniforms and attributes, and the buffers of the figure, which
// all characters share.
class HandProgram {
  public:
    HandProgram() {
        RVSHADER::findByName("pplDirectA")->render(nullptr);
        int current = 0;
        glGetIntegerv(GL_CURRENT_PROGRAM, &current);
        object = current;
        quaternions = RVOPENGL::glGetUniformLocationARB(object, "boneQuat");
        translations = RVOPENGL::glGetUniformLocationARB(object, "boneTrans");
        index = RVOPENGL::glGetAttribLocationARB(object, "boneIndex");
        weight = RVOPENGL::glGetAttribLocationARB(object, "boneWeight");
        RVSHADER::disable();
        upload();
    }
    ~HandProgram() { RVOPENGL::glDeleteBuffersARB(5, buffers); }
    HandProgram(const HandProgram &) = delete;
    HandProgram &operator=(const HandProgram &) = delete;

    void start() const {
        RVOPENGL::glUseProgramObjectARB(object);
        bind(0);
        glVertexPointer(3, GL_FLOAT, 0, nullptr);
        bind(1);
        glNormalPointer(GL_FLOAT, 0, nullptr);
        bindWeights();
        RVOPENGL::glBindBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB, buffers[4]);
    }
    void bindWeights() const {
        bindAttribute(2, index);
        bindAttribute(3, weight);
    }
    void setBones(const bench::Posed &posed) const {
        RVOPENGL::glUniform4fvARB(quaternions, bonesOfCharacter, posed.quaternions);
        RVOPENGL::glUniform3fvARB(translations, bonesOfCharacter, posed.translations);
    }
    void unbindWeights() const {
        RVOPENGL::glDisableVertexAttribArrayARB(index);
        RVOPENGL::glDisableVertexAttribArrayARB(weight);
    }
    void end() const {
        unbindWeights();
        RVOPENGL::glBindBufferARB(GL_ARRAY_BUFFER_ARB, 0);
        RVOPENGL::glBindBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB, 0);
        RVOPENGL::glUseProgramObjectARB(0);
    }

  private:
    GLuint object, index, weight, buffers[5];
    GLint quaternions, translations;

    void bind(int buffer) const { RVOPENGL::glBindBufferARB(GL_ARRAY_BUFFER_ARB, buffers[buffer]); }
    void bindAttribute(int buffer, GLuint attribute) const {
        bind(buffer);
        RVOPENGL::glEnableVertexAttribArrayARB(attribute);
        RVOPENGL::glVertexAttribPointerARB(attribute, 4, GL_FLOAT, GL_FALSE, 0, nullptr);
    }
    template <class Value> static void fill(GLenum target, const std::vector<Value> &values) {
        RVOPENGL::glBufferDataARB(target, values.size() * sizeof(Value), values.data(),
                                  GL_STATIC_DRAW_ARB);
    }
    void upload() {
        const bench::Figure figure = bench::makeFigure();
        RVOPENGL::glGenBuffersARB(5, buffers);
        const std::vector<float> indices(figure.boneIndices.begin(), figure.boneIndices.end());
        const std::vector<float> *arrays[] = {&figure.shape.positions, &figure.shape.normals,
                                              &indices, &figure.boneWeights};
        for (int i = 0; i < 4; ++i) {
            bind(i);
            fill(GL_ARRAY_BUFFER_ARB, *arrays[i]);
        }
        RVOPENGL::glBindBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB, buffers[4]);
        fill(GL_ELEMENT_ARRAY_BUFFER_ARB, figure.shape.indices);
        RVOPENGL::glBindBufferARB(GL_ARRAY_BUFFER_ARB, 0);
        RVOPENGL::glBindBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB, 0);
    }
};

// ---- A frame of them all.

void frameByEngine(benchmark::State &state, bool program) {
    const Characters characters(program);
    for (auto _ : state)
        bench::drawByEngine(characters.scene);
}

void loadPlace(int number) {
    const auto place = bench::characterPlace(number);
    glLoadIdentity();
    glTranslatef(place[0], place[1], place[2] - bench::characterDistance);
}

void drawFrame(HandCharacters &hand, const HandProgram *program) {
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    bench::setCharacterLight();
    glEnableClientState(GL_VERTEX_ARRAY);
    glEnableClientState(GL_NORMAL_ARRAY);
    program ? program->start() : glEnable(GL_LIGHTING);
    for (int i = 0; i < numberOfCharacters; ++i) {
        const bench::HandFigure &figure = hand.figures[i];
        bench::Posed &posed = hand.posed[i];
        figure.pose(hand.boneMatrices[i].data());
        figure.combine(hand.boneMatrices[i].data(), identity, posed);
        const std::vector<unsigned short> &indices = figure.figure.shape.indices;
        if (program) {
            figure.toQuaternions(posed);
            program->setBones(posed);
        } else {
            figure.skin(posed);
            glVertexPointer(3, GL_FLOAT, 0, posed.positions.data());
            glNormalPointer(GL_FLOAT, 0, posed.normals.data());
        }
        loadPlace(i);
        glDrawElements(GL_TRIANGLES, static_cast<GLsizei>(indices.size()), GL_UNSIGNED_SHORT,
                       program ? nullptr : indices.data());
    }
    program ? program->end() : glDisable(GL_LIGHTING);
    glDisableClientState(GL_VERTEX_ARRAY);
    glDisableClientState(GL_NORMAL_ARRAY);
    glFinish();
}

void frameByHand(benchmark::State &state, bool program) {
    const Characters characters(program);
    const bench::Pixels wanted = bench::readWindow();
    const auto bound = program ? std::make_unique<HandProgram>() : nullptr;
    HandCharacters hand;
    RAVOLT::begin3D(characters.scene.camera); // resets the state that the engine's frame has left
    drawFrame(hand, bound.get());
    state.counters["pictures_differ"] = bench::difference(wanted, bench::readWindow());
    for (auto _ : state)
        drawFrame(hand, bound.get());
}

// ---- The bones alone: from their matrices, for the processor and for the program.

void bonesByEngine(benchmark::State &state, bool program) {
    const Characters characters(program);
    const std::vector<RVMESH *> meshes = bench::skinnedMeshes(characters.scene);
    if (program)
        RVSHADER::findByName("pplDirectA")->render(nullptr);
    for (auto _ : state)
        for (unsigned int i = 0; i < meshes.size(); ++i) {
            meshes[i]->animate(i);
            RVSHADER::unbindBones();
        }
    state.SetItemsProcessed(state.iterations() * numberOfCharacters);
}

void bonesByHand(benchmark::State &state, bool program) {
    const Characters characters(program);
    const auto bound = program ? std::make_unique<HandProgram>() : nullptr;
    HandCharacters hand;
    if (program)
        bound->start();
    for (auto _ : state) {
        for (int i = 0; i < numberOfCharacters; ++i) {
            hand.figures[i].combine(hand.boneMatrices[i].data(), identity, hand.posed[i]);
            if (program) {
                hand.figures[i].toQuaternions(hand.posed[i]);
                bound->setBones(hand.posed[i]);
                bound->bindWeights();
                bound->unbindWeights();
            } else {
                hand.figures[i].skin(hand.posed[i]);
            }
        }
        benchmark::ClobberMemory();
    }
    if (program)
        bound->end();
    state.SetItemsProcessed(state.iterations() * numberOfCharacters);
}

using Job = void (*)(benchmark::State &, bool);

void registerBoth(const std::string &job, benchmark::TimeUnit unit, Job engine, Job hand) {
    constexpr const char *paths[] = {", processor", ", program"};
    for (const bool program : {false, true}) {
        benchmark::RegisterBenchmark((job + paths[program] + "/ravolt").c_str(), engine, program)
            ->Unit(unit);
        benchmark::RegisterBenchmark((job + paths[program] + "/baseline").c_str(), hand, program)
            ->Unit(unit);
    }
}

[[maybe_unused]] const bool registered = [] {
    registerBoth("50 characters, frame", benchmark::kMillisecond, frameByEngine, frameByHand);
    registerBoth("50 characters, bones", benchmark::kMicrosecond, bonesByEngine, bonesByHand);
    return true;
}();

// ---- A clip of 60 bones on a tree of 1,000 nodes, of which every sixteenth is a bone.

constexpr int treeNodes = 1000, clipBones = 60, childrenOfNode = 4;

std::string nodeName(int number) {
    char name[32];
    std::snprintf(name, sizeof name, number % 16 == 15 ? "bone%03d" : "thing%03d", number);
    return name;
}

std::string clipBone(int bone) { return nodeName(bone * 16 + 15); }

void applyByEngine(benchmark::State &state) {
    bench::startEngine(false);
    std::vector<RVNODE *> nodes;
    for (int i = 0; i < treeNodes; ++i) {
        nodes.push_back(new RVNODE());
        nodes.back()->setName(nodeName(i).c_str());
        if (i)
            nodes.back()->link(nodes[(i - 1) / childrenOfNode]);
    }
    RVANIM *clip = new RVANIM();
    clip->setNumberOfBones(clipBones);
    clip->setNumberOfFrames(1);
    for (int bone = 0; bone < clipBones; ++bone) {
        clip->setBoneName(bone, clipBone(bone).c_str());
        clip->setFrame(0, bone, 1.0f, 2.0f, static_cast<float>(bone));
    }
    for (auto _ : state)
        clip->apply(0, nodes[0]);
    if (RVNODE::findByName(clipBone(clipBones - 1).c_str())->getRotation().z != clipBones - 1)
        state.SkipWithError("a bone was not found");
    RVANIM::cleanUp();
    RVNODE::cleanUp();
}
BENCHMARK(applyByEngine)
    ->Name("clip of 60 bones on 1,000 nodes/ravolt")
    ->Unit(benchmark::kMicrosecond);

// What the search and the turn need of a node, at its distance in memory.
struct PlainNode {
    char name[256];
    float rotation[3];
    float otherFields[sizeof(RVNODE) / sizeof(float) - 70];
    std::vector<PlainNode *> children;
};

PlainNode *find(PlainNode &node, const char *name) {
    if (!std::strcmp(node.name, name))
        return &node;
    for (PlainNode *child : node.children)
        if (PlainNode *found = find(*child, name))
            return found;
    return nullptr;
}

void applyByHand(benchmark::State &state) {
    std::vector<std::unique_ptr<PlainNode>> nodes;
    for (int i = 0; i < treeNodes; ++i) {
        nodes.push_back(std::make_unique<PlainNode>());
        std::strcpy(nodes.back()->name, nodeName(i).c_str());
        if (i)
            nodes[(i - 1) / childrenOfNode]->children.push_back(nodes.back().get());
    }
    std::vector<std::string> bones;
    for (int bone = 0; bone < clipBones; ++bone)
        bones.push_back(clipBone(bone));
    const float rotation[] = {1, 2, 3};
    for (auto _ : state)
        for (const std::string &bone : bones)
            if (PlainNode *node = find(*nodes[0], bone.c_str()))
                std::memcpy(node->rotation, rotation, sizeof rotation);
}
BENCHMARK(applyByHand)
    ->Name("clip of 60 bones on 1,000 nodes/baseline")
    ->Unit(benchmark::kMicrosecond);

} // namespace
