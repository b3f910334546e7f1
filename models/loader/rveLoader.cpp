// A scene file is read twice. The first pass builds nothing and checks everything: bounds, kinds,
// texts, tables, depth. Only a file that passes is built, so that the second pass need not check
// its bytes, and an invalid file creates no objects. Memory can still run out in the second pass;
// then everything created so far is deleted.

#include "ravolt/RAVOLT.h"

#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVMESH.h"
#include "ravolt/RVNODE.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/zlf.h"

#include "foundation/bytes.h"
#include "foundation/text.h"
#include "models/loadIndex.h"
#include "models/meshBuffers.h"
#include "models/modelFile.h"
#include "models/rveFile.h"
#include "models/rveFormat.h"
#include "scene/nodeInternals.h"
#include "scene/nodeTraits.h"

#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <vector>

using ravolt::ByteReader;
using ravolt::LoadIndex;
using ravolt::MaterialRecord;
using ravolt::NodeInternals;
using ravolt::RveVerdict;

namespace rve = ravolt::rve;

namespace {

// The state of one load, for functions that have no parameter for it.
struct LoadState {
    bool obsolete = false;
    unsigned int nodes = 0;
} state;

bool isNone(const char *text) { return std::strcmp(text, rve::noName) == 0; }

// --- Materials

// What a load has added to the registries of materials, programs and textures; deleted unless the
// load is committed. The arrays are reserved beforehand, so that recording a new object cannot
// fail.
class LoadTransaction {
  public:
    LoadTransaction() = default;
    LoadTransaction(const LoadTransaction &) = delete;
    LoadTransaction &operator=(const LoadTransaction &) = delete;
    ~LoadTransaction() {
        for (RVMATERIAL *material : materials) {
            for (unsigned int slot = 0; slot < RV_TEXTURE_UNITS; ++slot)
                material->setTexture(slot, nullptr);
            delete material;
        }
        for (RVSHADER *shader : shaders)
            delete shader;
        for (RVTEXTURE *texture : textures)
            delete texture;
    }

    void commit() {
        materials.clear();
        shaders.clear();
        textures.clear();
    }

    std::vector<RVMATERIAL *> materials;
    std::vector<RVSHADER *> shaders;
    std::vector<RVTEXTURE *> textures;
    LoadIndex index;
};

// Whether a record names a file that it may name.
bool namesFile(const char *name) {
    if (isNone(name))
        return false;
    if (!RAVOLT::isConfiningFiles() || ravolt::staysBelowPath(name))
        return true;
    zlfLog("   [!] File name %s leaves its path: refused @ RAVOLT::load\n", name);
    return false;
}

// A texture whose file cannot be read is used all the same.
RVTEXTURE *findOrLoadTexture(const char *fileName, LoadTransaction &transaction) {
    if (RVTEXTURE *texture = transaction.index.findTexture(fileName))
        return texture;
    RVTEXTURE *texture = new RVTEXTURE;
    transaction.textures.push_back(texture);
    texture->load(fileName);
    transaction.index.add(*texture);
    return texture;
}

// The normal map of a diffuse texture: its name ends in "_n.tga" instead of the last six
// characters, whatever these are. NULL when there is none.
RVTEXTURE *findOrLoadNormalMap(const char *textureName, LoadTransaction &transaction) {
    std::string name = textureName;
    name.resize(name.size() - std::min<std::size_t>(name.size(), 6));
    name += "_n.tga";
    // On purpose: the file is searched without the path of the textures.
    if (!zlfFileExists(name.c_str())) {
        zlfLog("   [!] normal map not found for %s\n", textureName);
        return nullptr;
    }
    zlfLog("   normal map: %s\n", name.c_str());
    return findOrLoadTexture(name.c_str(), transaction);
}

// A program that cannot be built is used all the same: its objects are drawn without it.
RVSHADER *findOrLoadShader(const char *name, LoadTransaction &transaction) {
    if (RVSHADER *shader = RVSHADER::findByName(name))
        return shader;
    const std::string vertexFile = std::string(name) + "VS.glsl";
    const std::string pixelFile = std::string(name) + "PS.glsl";
    RVSHADER *shader = new RVSHADER;
    transaction.shaders.push_back(shader);
    shader->load(vertexFile.c_str(), pixelFile.c_str(), false);
    shader->setName(name);
    return shader;
}

// A registered material of the same name is not changed; the textures and the program of the record
// are loaded all the same.
void buildMaterial(const MaterialRecord &record, LoadTransaction &transaction) {
    RVTEXTURE *diffuse = nullptr;
    RVTEXTURE *normalMap = nullptr;
    // The name of a normal map is outside of the path only if that of the texture is.
    if (namesFile(record.textureName)) {
        diffuse = findOrLoadTexture(record.textureName, transaction);
        normalMap = findOrLoadNormalMap(record.textureName, transaction);
    }
    RVSHADER *shader =
        namesFile(record.shaderName) ? findOrLoadShader(record.shaderName, transaction) : nullptr;
    if (LoadIndex::findMaterial(record.name))
        return;

    RVMATERIAL *material = new RVMATERIAL;
    transaction.materials.push_back(material);
    material->setAmbient(record.ambient);
    material->setDiffuse(record.diffuse);
    material->setSpecular(record.specular);
    material->setEmission(record.selfIllumination);
    material->setName(record.name);
    transaction.index.add(*material);
    material->setTexture(0, diffuse);
    material->setTexture(1, normalMap);
    material->setTransparency(record.transparency);
    material->setShininess(record.shininess);
    material->setShader(shader);
}

void buildMaterials(ByteReader &reader, const char *fileName, LoadTransaction &transaction) {
    const unsigned int number = reader.read<std::uint16_t>();
    transaction.materials.reserve(number);
    transaction.shaders.reserve(number);
    transaction.textures.reserve(2 * number);
    if (!number)
        zlfLog("   [!] Warning: no material found in file %s\n", fileName);
    MaterialRecord record;
    for (unsigned int i = 0; i < number; ++i) {
        ravolt::readMaterialRecord(reader, record);
        buildMaterial(record, transaction);
    }
}

// --- Files

void destroyTree(RVNODE *node) {
    for (unsigned int i = 0; i < node->getNumberOfChildren(); ++i)
        if (RVNODE *child = node->getChild(i))
            destroyTree(child);
    delete node;
}

struct DestroyTree {
    void operator()(RVNODE *root) const { destroyTree(root); }
};

bool namesXml(const char *path) { return std::strstr(path, ".xml") || std::strstr(path, ".XML"); }

bool readHeader(const char *path, const ravolt::FileBytes &file) {
    if (!ravolt::readRveHeader(file.data(), file.size(), state.obsolete)) {
        zlfLog("   [!] Invalid header in file %s @ RAVOLT::load\n", path);
        return false;
    }
    if (state.obsolete)
        zlfLog("   [!] Obsolete RVE file format detected: re-export your model with 1.6a\n");
    zlfLog("   Header: %s\n", state.obsolete ? rve::obsoleteMagic.data() : rve::magic.data());
    return true;
}

// The first pass.
bool checkContents(const char *path, const ravolt::FileBytes &file) {
    ByteReader reader(file.data(), file.size(), rve::headerBytes);
    switch (ravolt::checkRve(reader, state.obsolete)) {
    case RveVerdict::good:
        return true;
    case RveVerdict::corrupted:
        zlfLog("   [!] Corrupted file %s @ RAVOLT::load\n", path);
        break;
    case RveVerdict::unknownKind:
        zlfLog("   [!] Unknow type @ RAVOLT::recursiveLoad\n");
        break;
    }
    return false;
}

} // namespace

RVNODE *RAVOLT::load(const char *fileName) try {
    const std::string name = fileName ? std::string(rvePath) + fileName : "";
    const char *path = name.c_str();
    if (!zlfFileExists(path)) {
        zlfLog("   [!] Invalid params or file not found @ RAVOLT::load\n");
        return nullptr;
    }
    if (namesXml(path))
        return loadXML(path);
    zlfLog("\n   Loading RVE file '%s'...\n", path);
    ravolt::FileBytes file;
    if (!ravolt::readModelFile(path, "RAVOLT::load", file) || !readHeader(path, file) ||
        !checkContents(path, file))
        return nullptr;

    LoadTransaction transaction;
    ByteReader reader(file.data(), file.size(), rve::headerBytes);
    buildMaterials(reader, path, transaction);
    state.nodes = 0;
    char *bytes = reinterpret_cast<char *>(const_cast<unsigned char *>(file.data()));
    long cursor = static_cast<long>(reader.position());
    std::unique_ptr<RVNODE, DestroyTree> root;
    {
        const ravolt::MeshBuffers::Deferral deferral;
        root.reset(recursiveLoad(bytes, &cursor, nullptr));
    }
    if (!root)
        return nullptr;
    ravolt::MeshBuffers::createForTree(*root);
    transaction.index.addTree(*root);
    recursiveInitBones(root.get(), root.get());
    zlfFree(file.release());
    zlfLog("   File .RVE loaded (%u nodes)\n", state.nodes);
    RVNODE::displayTree(root.get());
    transaction.commit();
    return root.release();
} catch (const std::bad_alloc &) {
    zlfLog("   [!] Out of memory for file %s%s @ RAVOLT::load\n", rvePath, fileName);
    return nullptr;
}

// NULL when memory runs out or the kind is unknown; the subtree is then deleted. The caller stores
// the node among the parent's children.
RVNODE *RAVOLT::recursiveLoad(char *buffer, long *cursor, RVNODE * /*parent*/) {
    const ravolt::NodeReader *nodeReader =
        ravolt::readerOf(static_cast<unsigned char>(buffer[(*cursor)++]));
    if (!nodeReader)
        zlfLog("   [!] Unknow type @ RAVOLT::recursiveLoad\n");
    RVNODE *node = nodeReader ? nodeReader->load(buffer, cursor, state.obsolete) : nullptr;
    if (!node)
        return nullptr;
    for (unsigned int i = 0; i < node->getNumberOfChildren(); ++i) {
        RVNODE *child = recursiveLoad(buffer, cursor, node);
        if (!child) {
            destroyTree(node);
            return nullptr;
        }
        NodeInternals::setChild(*node, i, *child);
    }
    ++state.nodes;
    return node;
}

bool RAVOLT::recursiveInitBones(RVNODE *root, RVNODE *node) {
    if (node->getType() == RV_NODE_TYPE_MESH)
        static_cast<RVMESH *>(node)->resetBones(root);
    for (unsigned int i = 0; i < node->getNumberOfChildren(); ++i)
        recursiveInitBones(root, node->getChild(i));
    return true;
}
