// Models of other authors. Each is either drawn, or rejected with one line, as listed in
// corpus.tsv.
//
// RAVOLT_CORPUS_RENEW=FILE appends what was found, as lines of corpus.tsv, to FILE.
// RAVOLT_CORPUS_PICTURES=FOLDER writes the pictures there.

#include "tests/tools/collection.h"
#include "tools/convert/import.h"
#include "tools/stage/engine.h"
#include "tools/stage/picture.h"
#include "tools/stage/stage.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <ravolt.h>

namespace {

using namespace tool_test;

std::size_t coveredPixels(const Picture &picture) {
    std::size_t covered = 0;
    for (std::size_t i = 0; i < picture.getPixels().size(); i += 3)
        covered += !Stage::isBackground(picture.getPixels()[i], picture.getPixels()[i + 1],
                                        picture.getPixels()[i + 2]);
    return covered;
}

int openGlErrors() {
    int errors = 0;
    while (glGetError() != GL_NO_ERROR && errors < 100)
        ++errors;
    return errors;
}

// The box of the triangles by the model's own matrices, in double precision.
void addTriangles(const aiScene &scene, const aiNode &node, const Affine &parent, Box &box) {
    const Affine here = parent * affineFrom(node.mTransformation);
    for (unsigned int i = 0; i < node.mNumMeshes; ++i) {
        const aiMesh &mesh = *scene.mMeshes[node.mMeshes[i]];
        for (unsigned int f = 0; f < mesh.mNumFaces; ++f)
            if (mesh.mFaces[f].mNumIndices == 3)
                for (int k = 0; k < 3; ++k)
                    box.add(here(Vector(mesh.mVertices[mesh.mFaces[f].mIndices[k]])));
    }
    for (unsigned int i = 0; i < node.mNumChildren; ++i)
        addTriangles(scene, *node.mChildren[i], here, box);
}

bool hasBones(const aiScene &scene) {
    return std::any_of(scene.mMeshes, scene.mMeshes + scene.mNumMeshes,
                       [](const aiMesh *mesh) { return mesh->mNumBones > 0; });
}

// A mesh with bones is where they are, not where its node is.
void expectSamePositions(const std::string &model, const Sphere &found) {
    Report report;
    Progress silent(false);
    ModelFiles files(collection / model, {}, report);
    const Model source((collection / model).string(), files, report, silent);
    if (hasBones(source.scene()))
        return;
    Box box;
    addTriangles(source.scene(), *source.scene().mRootNode, {}, box);
    const Vector center = (box.low + box.high) * 0.5;
    const double size = length(box.high - box.low) + length(center);
    EXPECT_LT(length(found.center - center), size * 1e-5) << model;
    EXPECT_LE(found.radius, length(box.high - box.low) * 0.50001) << model;
    EXPECT_GE(found.radius, length(box.high - box.low) * 0.25) << model;
}

void writeWhereRequested(const std::string &model, const Picture &picture) {
    const char *folder = std::getenv("RAVOLT_CORPUS_PICTURES");
    if (!folder)
        return;
    std::string name = model;
    std::replace(name.begin(), name.end(), '/', '_');
    writePng(picture, fs::path(folder) / (name + ".png"));
}

void draw(const std::string &model) {
    constexpr WindowSize size = {320, 240};
    Engine engine(size, model, false, "ravolt_log.txt");
    RVNODE *root = engine.load("scene.rve");
    openGlErrors();
    Stage stage(root);
    const Picture picture = shoot(stage, size); // as the command draws it
    writeWhereRequested(model, picture);
    EXPECT_EQ(openGlErrors(), 0) << model;
    EXPECT_GT(coveredPixels(picture), 100u) << model << " leaves an empty picture";
    expectSamePositions(model, sphereAround(root));
}

// The outcome as corpus.tsv states it.
std::string outcomeOf(const std::string &model) {
    ConvertOptions options = optionsOf(collection / model);
    options.sources.follow = true; // the models of one folder use pictures of another
    Report report;
    Progress silent(false);
    try {
        const ConvertResult result = convertModel(options, report, silent);
        draw(model);
        return "drawn\t" + counted(result.meshes, "mesh", "meshes") + ", " +
               counted(result.triangles, "triangle", "triangles") + ", " +
               counted(result.textures, "texture", "textures");
    } catch (const Failure &failure) {
        std::string reason = failure.what();
        const std::string file = options.model.string();
        EXPECT_EQ(reason.rfind(file + ": ", 0), 0u) << reason;
        EXPECT_EQ(reason.find('\n'), std::string::npos) << reason;
        reason.erase(0, file.size() + 2);
        for (std::size_t at = reason.find(file); at != std::string::npos; at = reason.find(file))
            reason.replace(at, file.size(), "FILE");
        return "refused\t" + reason;
    }
}

class Corpus : public CollectionTest {};

TEST_P(Corpus, IsDrawnOrRefusedAsStated) {
    std::map<std::string, std::string> expected = rowsOf(RAVOLT_CORPUS_TABLE, GetParam(), 1);
    std::ofstream renewed = renewedRows("RAVOLT_CORPUS_RENEW");
    for (const std::string &model : modelsIn(GetParam())) {
        const std::string outcome = outcomeOf(model);
        EXPECT_EQ(outcome, expected[model]) << model;
        expected.erase(model);
        renewed << model << "\t" << outcome << "\n";
    }
    for (const auto &[model, outcome] : expected)
        ADD_FAILURE() << model << " is not there";
}

INSTANTIATE_TEST_SUITE_P(Models, Corpus,
                         ::testing::Values("glTF2", "glTF", "OBJ", "Collada", "FBX", "3DS", "MD5",
                                           "X", "PLY"),
                         nameOf);

} // namespace
