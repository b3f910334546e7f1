// Builds the figure, its bones and its movements.

#include "characters.h"

#include "ravolt/RVCAMERA.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVMESH.h"
#include "tools/writers/rveWriter.h"

#include <GL/gl.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>

namespace bench {

namespace {

constexpr float pi = 3.14159265f;
constexpr int limbs = 5, rings = 20, segments = 20; // 2,000 vertices
constexpr float jointLength = 0.25f;
constexpr float lightDirection[] = {0.3f, -0.4f, -0.87f};
constexpr float lightColor[] = {0.8f, 0.8f, 0.7f, 1.0f}, lightAmbient[] = {0.2f, 0.2f, 0.2f, 1.0f};

float limbAngle(int limb) { return pi / 2 + limb * 2 * pi / limbs; }

// The bones of a limb follow each other; bone 0 is where they meet.
int boneOf(int limb, int joint) { return joint < 0 ? 0 : std::min(1 + limb + joint * limbs, 29); }

void addVertex(Figure &figure, int limb, int ring, int segment) {
    const float along = 1.5f * ring / (rings - 1), around = 2 * pi * segment / segments;
    const float x = std::cos(limbAngle(limb)), y = std::sin(limbAngle(limb));
    const float side = std::cos(around), front = std::sin(around);
    const float normal[] = {-y * side, x * side, front};
    const float axis[] = {x * along, y * along, 0};
    for (int i = 0; i < 3; ++i) {
        figure.shape.positions.push_back(axis[i] + 0.12f * normal[i]);
        figure.shape.normals.push_back(normal[i]);
    }
    figure.shape.uvs.push_back(along);
    figure.shape.uvs.push_back(around);
    const int joint = static_cast<int>(along / jointLength) - 1;
    const int bones[] = {boneOf(limb, joint - 1), boneOf(limb, joint), boneOf(limb, joint + 1), 0};
    for (int i = 0; i < weightsOfVertex; ++i) {
        constexpr float weights[] = {0.25f, 0.5f, 0.1875f, 0.0625f};
        figure.boneIndices.push_back(static_cast<unsigned char>(bones[i]));
        figure.boneWeights.push_back(weights[i]);
    }
}

void addFaces(Figure &figure, int limb) {
    for (int ring = 0; ring + 1 < rings; ++ring)
        for (int segment = 0; segment < segments; ++segment) {
            const int first = (limb * rings + ring) * segments, next = (segment + 1) % segments;
            const int a = first + segment, b = first + next, c = a + segments, d = b + segments;
            for (int index : {a, b, c, b, d, c})
                figure.shape.indices.push_back(static_cast<unsigned short>(index));
        }
}

ravolt::RveNode emptyMesh(const std::string &name, const float *offset) {
    ravolt::RveNode node;
    node.kind = ravolt::RveKind::mesh;
    node.name = name;
    node.position = {offset[0], offset[1], offset[2]};
    return node;
}

std::string boneName(int character, int bone) {
    char name[32];
    std::snprintf(name, sizeof name, "c%db%d", character, bone);
    return name;
}

ravolt::RveNode boneTree(const Figure &figure, int character, int bone) {
    ravolt::RveNode node = emptyMesh(boneName(character, bone), figure.bones[bone].offset);
    node.mesh.material = "";
    node.mesh.hidden = true; // or each bone would be lit as an object of its own
    for (int child = bone + 1; child < bonesOfCharacter; ++child)
        if (figure.bones[child].parent == bone)
            node.children.push_back(boneTree(figure, character, child));
    return node;
}

ravolt::RveNode bodyOf(const Figure &figure, int character) {
    constexpr float nowhere[3] = {};
    ravolt::RveNode node = emptyMesh("body" + std::to_string(character), nowhere);
    fillMesh(figure.shape, node.mesh);
    node.mesh.material = "skin";
    node.mesh.radius = 2.0f;
    node.mesh.skin.weightsPerVertex = weightsOfVertex;
    node.mesh.skin.boneIndices = figure.boneIndices;
    node.mesh.skin.boneWeights = figure.boneWeights;
    for (int bone = 0; bone < bonesOfCharacter; ++bone)
        node.mesh.skin.bones.push_back(boneName(character, bone));
    return node;
}

void collect(RVNODE *node, std::vector<RVMESH *> &meshes) {
    if (node->getType() == RV_NODE_TYPE_MESH && static_cast<RVMESH *>(node)->isSkinned())
        meshes.push_back(static_cast<RVMESH *>(node));
    for (unsigned int i = 0; i < node->getNumberOfChildren(); ++i)
        collect(node->getChild(i), meshes);
}

// a first, then b.
void multiply(const Matrix &a, const Matrix &b, Matrix &result) {
    for (int i = 0; i < 16; i += 4)
        for (int j = 0; j < 4; ++j)
            result[i + j] =
                a[i] * b[j] + a[i + 1] * b[4 + j] + a[i + 2] * b[8 + j] + a[i + 3] * b[12 + j];
}

void setIdentity(Matrix &matrix) {
    for (int i = 0; i < 16; ++i)
        matrix[i] = i % 5 == 0 ? 1.0f : 0.0f;
}

void rotateAbout(int axis, float degrees, Matrix &matrix) {
    const float c = std::cos(degrees * pi / 180), s = std::sin(degrees * pi / 180);
    Matrix turn, before;
    setIdentity(turn);
    const int a = (axis + 1) % 3, b = (axis + 2) % 3;
    turn[a * 5] = turn[b * 5] = c;
    turn[a * 4 + b] = s;
    turn[b * 4 + a] = -s;
    std::memcpy(before, matrix, sizeof before);
    multiply(turn, before, matrix);
}

void invertAffine(const Matrix &m, Matrix &i) {
    const float d =
        1.0f / (m[0] * (m[5] * m[10] - m[6] * m[9]) - m[1] * (m[4] * m[10] - m[6] * m[8]) +
                m[2] * (m[4] * m[9] - m[5] * m[8]));
    i[0] = (m[5] * m[10] - m[6] * m[9]) * d;
    i[1] = -(m[1] * m[10] - m[2] * m[9]) * d;
    i[2] = (m[1] * m[6] - m[2] * m[5]) * d;
    i[4] = -(m[4] * m[10] - m[6] * m[8]) * d;
    i[5] = (m[0] * m[10] - m[2] * m[8]) * d;
    i[6] = -(m[0] * m[6] - m[2] * m[4]) * d;
    i[8] = (m[4] * m[9] - m[5] * m[8]) * d;
    i[9] = -(m[0] * m[9] - m[1] * m[8]) * d;
    i[10] = (m[0] * m[5] - m[1] * m[4]) * d;
    for (int c = 0; c < 3; ++c) {
        i[4 * c + 3] = 0;
        i[12 + c] = -(m[12] * i[c] + m[13] * i[4 + c] + m[14] * i[8 + c]);
    }
    i[15] = 1;
}

} // namespace

Figure makeFigure() {
    Figure figure;
    for (int limb = 0; limb < limbs; ++limb) {
        for (int ring = 0; ring < rings; ++ring)
            for (int segment = 0; segment < segments; ++segment)
                addVertex(figure, limb, ring, segment);
        addFaces(figure, limb);
    }
    figure.bones[0] = {-1, {0, 0, 0}, {0, 10, 0}};
    for (int bone = 1; bone < bonesOfCharacter; ++bone) {
        const int limb = (bone - 1) % limbs, joint = (bone - 1) / limbs;
        const float angle = limbAngle(limb);
        figure.bones[bone] = {boneOf(limb, joint - 1),
                              {jointLength * std::cos(angle), jointLength * std::sin(angle), 0},
                              {6 * std::sin(0.9f * bone), 8 * std::cos(0.7f * bone), 12}};
    }
    return figure;
}

std::array<float, 3> characterPlace(int number) {
    return {2.6f * (number % 10) - 11.7f, 3.4f * (number / 10) - 6.8f, 0};
}

Scene makeCharacterScene() {
    const Figure figure = makeFigure();
    ravolt::RveScene scene;
    ravolt::RveMaterial material;
    material.name = "skin";
    scene.materials.push_back(material);
    scene.root.name = "root";
    for (int character = 0; character < numberOfCharacters; ++character) {
        ravolt::RveNode root;
        root.name = "HumanoidRoot";
        root.children = {boneTree(figure, character, 0), bodyOf(figure, character)};
        scene.root.children.push_back(root);
    }
    Scene result = open(scene, characterDistance);
    for (int character = 0; character < numberOfCharacters; ++character) {
        // After loading, which stores the bind pose relative to the root of the figure.
        const auto place = characterPlace(character);
        result.root->getChild(character)->setPosition(place[0], place[1], place[2]);
        for (int bone = 0; bone < bonesOfCharacter; ++bone) {
            RVNODE *node = result.root->findByNameInHierarchy(boneName(character, bone).c_str());
            const float *angles = figure.bones[bone].rotation;
            node->setRotation(angles[0], angles[1], angles[2]);
        }
    }
    RVLIGHT *light = new RVLIGHT();
    light->setLightType(RV_LIGHT_TYPE_DIRECTIONAL);
    light->setPosition(0, 0, 2 * characterDistance); // its marker is behind the camera
    light->setDirection(lightDirection[0], lightDirection[1], lightDirection[2]);
    light->setDiffuse(lightColor[0], lightColor[1], lightColor[2], lightColor[3]);
    light->setAmbient(lightAmbient[0], lightAmbient[1], lightAmbient[2], lightAmbient[3]);
    light->setSpecular(0, 0, 0, 1);
    light->link(result.root);
    return result;
}

std::vector<RVMESH *> skinnedMeshes(const Scene &scene) {
    std::vector<RVMESH *> meshes;
    collect(scene.root, meshes);
    return meshes;
}

void setCharacterLight() {
    const float position[] = {-lightDirection[0], -lightDirection[1], -lightDirection[2], 0};
    const float specular[] = {0, 0, 0, 1};
    glEnable(GL_LIGHT0);
    glLightfv(GL_LIGHT0, GL_AMBIENT, lightAmbient);
    glLightfv(GL_LIGHT0, GL_DIFFUSE, lightColor);
    glLightfv(GL_LIGHT0, GL_SPECULAR, specular);
    glLightf(GL_LIGHT0, GL_SPOT_CUTOFF, 180);
    glLoadIdentity();
    glLightfv(GL_LIGHT0, GL_POSITION, position);
}

HandFigure::HandFigure() : figure(makeFigure()) {
    Matrix boneMatrices[bonesOfCharacter];
    for (int bone = 0; bone < bonesOfCharacter; ++bone) { // without a turn
        const Figure::Bone &each = figure.bones[bone];
        setIdentity(boneMatrices[bone]);
        for (int i = 0; i < 3; ++i)
            boneMatrices[bone][12 + i] =
                each.offset[i] + (each.parent < 0 ? 0 : boneMatrices[each.parent][12 + i]);
        invertAffine(boneMatrices[bone], inverseBind[bone]);
    }
}

void HandFigure::pose(Matrix *boneMatrices) const {
    for (int bone = 0; bone < bonesOfCharacter; ++bone) {
        const Figure::Bone &each = figure.bones[bone];
        Matrix local;
        setIdentity(local);
        std::copy_n(each.offset, 3, local + 12);
        for (int axis = 0; axis < 3; ++axis)
            rotateAbout(axis, each.rotation[axis], local);
        if (each.parent < 0)
            std::memcpy(boneMatrices[bone], local, sizeof local);
        else
            multiply(local, boneMatrices[each.parent], boneMatrices[bone]);
    }
}

void HandFigure::combine(const Matrix *boneMatrices, const Matrix &mesh, Posed &posed) const {
    Matrix inverseMesh, placed;
    invertAffine(mesh, inverseMesh);
    for (int bone = 0; bone < bonesOfCharacter; ++bone) {
        multiply(boneMatrices[bone], inverseMesh, placed);
        multiply(inverseBind[bone], placed, posed.bones[bone]);
    }
}

// For turns of less than a half, as these are.
void HandFigure::toQuaternions(Posed &posed) const {
    for (int bone = 0; bone < bonesOfCharacter; ++bone) {
        const Matrix &m = posed.bones[bone];
        const float root = std::sqrt(m[0] + m[5] + m[10] + 1.0f), r = 0.5f / root;
        float *q = posed.quaternions + 4 * bone;
        q[0] = (m[6] - m[9]) * r;
        q[1] = (m[8] - m[2]) * r;
        q[2] = (m[1] - m[4]) * r;
        q[3] = root / 2;
        std::copy_n(m + 12, 3, posed.translations + 3 * bone);
    }
}

void HandFigure::skin(Posed &posed) const {
    const std::size_t size = figure.shape.positions.size();
    posed.positions.resize(size);
    posed.normals.resize(size);
    const unsigned char *index = figure.boneIndices.data();
    const float *weight = figure.boneWeights.data();
    const float *v = figure.shape.positions.data(), *n = figure.shape.normals.data();
    float *position = posed.positions.data(), *normal = posed.normals.data();
    for (std::size_t i = 0; i < size; i += 3) {
        float m[16] = {};
        for (int k = 0; k < weightsOfVertex; ++k, ++index, ++weight)
            for (int element = 0; element < 16; ++element)
                m[element] += *weight * posed.bones[*index][element];
        for (int c = 0; c < 3; ++c) {
            position[i + c] = v[i] * m[c] + v[i + 1] * m[4 + c] + v[i + 2] * m[8 + c] + m[12 + c];
            normal[i + c] = n[i] * m[c] + n[i + 1] * m[4 + c] + n[i + 2] * m[8 + c];
        }
    }
}

} // namespace bench
