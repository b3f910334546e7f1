// Materials as records, slots and a registry: everything that needs no OpenGL.

#include "ravolt/RVMATERIAL.h"

#include "ravolt/RVSHADER.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/zlf.h"
#include "tests/support/logReader.h"

#include <ctime>
#include <string>
#include <vector>

#include <functional>
#include <gtest/gtest.h>

namespace ravolt::test {

namespace {

struct ColorAccess {
    const char *name;
    void (RVMATERIAL::*setVector)(const Z3MVECTOR4D &);
    void (RVMATERIAL::*setNumbers)(float, float, float, float);
    Z3MVECTOR4D (RVMATERIAL::*get)() const;
    float byDefault; // red, green and blue
};
const ColorAccess colors[] = {
    {"ambient", &RVMATERIAL::setAmbient, &RVMATERIAL::setAmbient, &RVMATERIAL::getAmbient, 0.2f},
    {"diffuse", &RVMATERIAL::setDiffuse, &RVMATERIAL::setDiffuse, &RVMATERIAL::getDiffuse, 0.6f},
    {"specular", &RVMATERIAL::setSpecular, &RVMATERIAL::setSpecular, &RVMATERIAL::getSpecular,
     0.2f},
    {"emission", &RVMATERIAL::setEmission, &RVMATERIAL::setEmission, &RVMATERIAL::getEmission, 0},
};

class Material : public testing::Test {
  protected:
    Material() : material(*new RVMATERIAL) { markLog(); }
    ~Material() override {
        RVMATERIAL::cleanUp();
        RVTEXTURE::cleanUp();
        RVSHADER::cleanUp();
    }

    // The colour number `index` (from 0) in a material whose colours differ.
    static Z3MVECTOR4D distinct(float index) { return {index + 0.1f, 0.2f, 0.3f, 0.4f}; }
    static void setDistinctColors(RVMATERIAL &target, float first) {
        for (const ColorAccess &color : colors)
            (target.*color.setVector)(distinct(first++));
    }
    static void expectDistinctColors(const RVMATERIAL &target, float first) {
        for (const ColorAccess &color : colors)
            EXPECT_TRUE((target.*color.get)() == distinct(first++)) << color.name;
    }

    RVMATERIAL &material; // the registry's
};

TEST_F(Material, NewMaterialIsGreyOpaqueAndUntextured) {
    EXPECT_EQ(material.getName(), "[material " + std::to_string(material.getId()) + "]");
    EXPECT_EQ(material.getTimeStamp(), 0);
    EXPECT_EQ(material.getReferences(), 0);
    for (const ColorAccess &color : colors) {
        const float grey = color.byDefault;
        EXPECT_TRUE((material.*color.get)() == Z3MVECTOR4D(grey, grey, grey, 1)) << color.name;
    }
    EXPECT_EQ(material.getTransparency(), 1.0f);
    EXPECT_EQ(material.getShininess(), 0.0f);
    for (unsigned int slot = 0; slot < RV_TEXTURE_UNITS; ++slot)
        EXPECT_EQ(material.getTexture(slot), nullptr);
    EXPECT_EQ(material.getShader(), nullptr);
    EXPECT_FALSE(material.isTransparent());
    EXPECT_FALSE(material.isTextured());
    EXPECT_FALSE(material.isSkinned());
}

TEST_F(Material, SettersStore) {
    setDistinctColors(material, 0);
    expectDistinctColors(material, 0);
    float number = 5;
    for (const ColorAccess &color : colors) {
        const float red = number++ + 0.1f;
        std::invoke(color.setNumbers, material, red, 0.2f, 0.3f, 0.4f);
    }
    expectDistinctColors(material, 5);
    material.setShininess(33.0f);
    EXPECT_EQ(material.getShininess(), 33.0f);
    material.setSkinning(true);
    EXPECT_TRUE(material.isSkinned());
    RVSHADER *shader = reinterpret_cast<RVSHADER *>(&material); // never followed
    material.setShader(shader);
    EXPECT_EQ(material.getShader(), shader);
    material.incReferences();
    EXPECT_EQ(material.getReferences(), 1);
    material.decReferences();
    material.decReferences();
    EXPECT_EQ(material.getReferences(), -1);
}

TEST_F(Material, OnlyATransparencyOfExactlyOneIsOpaque) {
    for (const float transparency : {0.999f, 0.0f, 1.001f, -1.0f, 1.0f}) {
        material.setTransparency(transparency);
        EXPECT_EQ(material.getTransparency(), transparency);
        EXPECT_EQ(material.isTransparent(), transparency != 1.0f);
    }
}

TEST_F(Material, SlotsCountReferences) {
    RVTEXTURE *a = new RVTEXTURE, *b = new RVTEXTURE;
    const struct {
        unsigned int slot;
        RVTEXTURE *texture;
        int referencesOfA, referencesOfB;
    } steps[] = {{0, a, 1, 0},       {15, a, 2, 0},      {0, b, 1, 1}, {0, b, 1, 1},
                 {0, nullptr, 1, 0}, {0, nullptr, 1, 0}, {3, b, 1, 1}};
    for (const auto &step : steps) {
        EXPECT_TRUE(material.setTexture(step.slot, step.texture));
        EXPECT_EQ(material.getTexture(step.slot), step.texture);
        EXPECT_EQ(a->getReferences(), step.referencesOfA);
        EXPECT_EQ(b->getReferences(), step.referencesOfB);
        EXPECT_EQ(material.isTextured(), material.getTexture(0) != nullptr); // by slot 0 alone
    }
    EXPECT_NOTHING_LOGGED();
    for (const unsigned int slot : {16u, 17u, 0xffffffffu}) {
        EXPECT_FALSE(material.setTexture(slot, a));
        EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVMATERIAL::setTexture\n");
        EXPECT_EQ(material.getTexture(slot), nullptr);
    }
    delete &material; // does not release them
    EXPECT_EQ(a->getReferences(), 1);
}

TEST_F(Material, SlotsOfADeletedTextureAreEmpty) {
    RVTEXTURE *const wall = new RVTEXTURE, *const floor = new RVTEXTURE;
    RVMATERIAL *const other = new RVMATERIAL, *const twin = new RVMATERIAL;
    material.setTexture(0, wall);
    material.setTexture(1, floor);
    material.setTexture(15, wall);
    other->setTexture(3, wall);
    other->setTexture(3, floor); // replaces it
    other->setTexture(7, wall);
    twin->clone(&material);
    delete wall;
    for (const RVMATERIAL *each : {&material, other, twin})
        for (unsigned int slot = 0; slot < RV_TEXTURE_UNITS; ++slot) {
            const bool hasFloor = slot == (each == other ? 3u : 1u);
            EXPECT_EQ(each->getTexture(slot), hasFloor ? floor : nullptr) << slot;
        }
    EXPECT_FALSE(material.isTextured());
    EXPECT_EQ(floor->getReferences(), 2);

    RVTEXTURE *const next = new RVTEXTURE; // perhaps at the first one's address
    EXPECT_EQ(material.getTexture(0), nullptr);
    material.setTexture(0, next);
    EXPECT_EQ(next->getReferences(), 1);
    delete twin;
    delete floor;
    EXPECT_EQ(other->getTexture(3), nullptr);
    RVTEXTURE::cleanUp();
    EXPECT_EQ(material.getTexture(0), nullptr);
    EXPECT_NOT_LOGGED("   [!] Invalid params @ RVMATERIAL::setTexture");
}

// The collector deletes textures without references, and a clone adds none.
TEST_F(Material, SlotsOfACloneAreEmptyWhenTheCollectorDeletesTheirTexture) {
    RVTEXTURE *const wall = new RVTEXTURE;
    RVMATERIAL *const twin = new RVMATERIAL;
    material.setTexture(2, wall);
    twin->clone(&material);
    material.setTexture(2, nullptr);
    EXPECT_EQ(twin->getTexture(2), wall);
    RVTEXTURE::garbageCollect(0);
    EXPECT_EQ(RVTEXTURE::getNumberOfTextures(), 0u);
    EXPECT_EQ(twin->getTexture(2), nullptr);
}

TEST_F(Material, DeletedProgramIsNotExplicitAnyLonger) {
    RVSHADER *const glow = new RVSHADER, *const glass = new RVSHADER;
    RVMATERIAL *const other = new RVMATERIAL, *const twin = new RVMATERIAL;
    material.setShader(glow);
    other->setShader(glow);
    other->setShader(glass);
    twin->clone(&material);
    delete glow;
    EXPECT_EQ(material.getShader(), nullptr);
    EXPECT_EQ(twin->getShader(), nullptr);
    EXPECT_EQ(other->getShader(), glass);
    delete other;
    material.setShader(glass);
    RVSHADER::cleanUp();
    EXPECT_EQ(material.getShader(), nullptr);
}

TEST_F(Material, ManyTexturesWithTheirMaterialsAreDeletedInLinearTime) {
    constexpr int number = 10'000;
    for (const bool oneByOne : {false, true}) {
        std::vector<RVTEXTURE *> textures;
        for (int index = 0; index < number; ++index) {
            textures.push_back(new RVTEXTURE);
            RVMATERIAL *const each = new RVMATERIAL;
            for (unsigned int slot = 0; slot < RV_TEXTURE_UNITS; ++slot)
                each->setTexture(
                    slot, textures[static_cast<std::size_t>(index) * slot % textures.size()]);
        }
        const std::clock_t begin = std::clock();
        if (oneByOne)
            for (RVTEXTURE *each : textures)
                delete each;
        else
            RVTEXTURE::cleanUp();
        const double seconds = static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
        RecordProperty(oneByOne ? "oneByOne" : "cleanUp", std::to_string(seconds));
        EXPECT_LT(seconds, 1.0);
        for (const RVMATERIAL *each = RVMATERIAL::getFirst(); each; each = each->getNext())
            ASSERT_EQ(each->getTexture(0), nullptr);
        RVMATERIAL::cleanUp();
    }
}

TEST_F(Material, CloneCopiesTheSurfaceAndAddsNoReferences) {
    RVTEXTURE *texture = new RVTEXTURE;
    RVMATERIAL *source = new RVMATERIAL;
    source->setName("stone");
    setDistinctColors(*source, 0);
    source->setTransparency(0.25f);
    source->setShininess(9);
    source->setTexture(7, texture);
    source->setShader(reinterpret_cast<RVSHADER *>(source)); // never followed
    source->setSkinning(true);
    source->incReferences();
    material.clone(source);
    EXPECT_EQ(material.getName(), "stone" + std::to_string(material.getId()));
    expectDistinctColors(material, 0);
    EXPECT_EQ(material.getTransparency(), 0.25f);
    EXPECT_EQ(material.getShininess(), 9.0f);
    EXPECT_EQ(material.getTexture(7), texture);
    EXPECT_EQ(material.getShader(), source->getShader());
    EXPECT_EQ(texture->getReferences(), 1);
    EXPECT_FALSE(material.isSkinned());
    EXPECT_EQ(material.getReferences(), 0);
}

TEST_F(Material, ClonesNamesAreCutAtTheirLengthAndNullChangesNothing) {
    const std::string name = material.getName();
    material.clone(nullptr);
    EXPECT_EQ(material.getName(), name);
    material.clone(&material);
    EXPECT_EQ(material.getName(), name + std::to_string(material.getId()));
    RVMATERIAL *source = new RVMATERIAL;
    source->setName(std::string(255, 'n').c_str());
    material.clone(source);
    EXPECT_EQ(material.getName(), std::string(255, 'n'));
}

} // namespace

} // namespace ravolt::test
