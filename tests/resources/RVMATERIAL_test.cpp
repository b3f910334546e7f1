// Materials as records, slots and a registry: all that needs no OpenGL.

#include "ravolt/RVMATERIAL.h"

#include "ravolt/RVSHADER.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/zlf.h"
#include "tests/support/logReader.h"

#include <ctime>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace ravolt::test {

namespace {

bool isColor(const Z3MVECTOR4D &color, float red, float green, float blue, float alpha) {
    return color.x == red && color.y == green && color.z == blue && color.w == alpha;
}

class Material : public testing::Test {
  protected:
    Material() : material(*new RVMATERIAL) { markLog(); }
    ~Material() override {
        RVMATERIAL::cleanUp();
        RVTEXTURE::cleanUp();
        RVSHADER::cleanUp();
    }

    RVMATERIAL &material; // the registry's
};

TEST_F(Material, NewMaterialIsGreyOpaqueAndUntextured) {
    EXPECT_EQ(material.getName(), "[material " + std::to_string(material.getId()) + "]");
    EXPECT_EQ(material.getTimeStamp(), 0);
    EXPECT_EQ(material.getReferences(), 0);
    EXPECT_TRUE(isColor(material.getAmbient(), 0.2f, 0.2f, 0.2f, 1.0f));
    EXPECT_TRUE(isColor(material.getDiffuse(), 0.6f, 0.6f, 0.6f, 1.0f));
    EXPECT_TRUE(isColor(material.getSpecular(), 0.2f, 0.2f, 0.2f, 1.0f));
    EXPECT_TRUE(isColor(material.getEmission(), 0.0f, 0.0f, 0.0f, 1.0f));
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
    const Z3MVECTOR4D color(0.1f, 0.2f, 0.3f, 0.4f);
    material.setAmbient(color);
    EXPECT_TRUE(isColor(material.getAmbient(), 0.1f, 0.2f, 0.3f, 0.4f));
    material.setAmbient(0.5f, 0.6f, 0.7f, 0.8f);
    EXPECT_TRUE(isColor(material.getAmbient(), 0.5f, 0.6f, 0.7f, 0.8f));
    material.setDiffuse(color);
    EXPECT_TRUE(isColor(material.getDiffuse(), 0.1f, 0.2f, 0.3f, 0.4f));
    material.setDiffuse(0.9f, 0.6f, 0.7f, 0.8f);
    EXPECT_TRUE(isColor(material.getDiffuse(), 0.9f, 0.6f, 0.7f, 0.8f));
    material.setSpecular(color);
    EXPECT_TRUE(isColor(material.getSpecular(), 0.1f, 0.2f, 0.3f, 0.4f));
    material.setSpecular(0.5f, 0.9f, 0.7f, 0.8f);
    EXPECT_TRUE(isColor(material.getSpecular(), 0.5f, 0.9f, 0.7f, 0.8f));
    material.setEmission(color);
    EXPECT_TRUE(isColor(material.getEmission(), 0.1f, 0.2f, 0.3f, 0.4f));
    material.setEmission(0.5f, 0.6f, 0.9f, 0.8f);
    EXPECT_TRUE(isColor(material.getEmission(), 0.5f, 0.6f, 0.9f, 0.8f));
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
    for (const float transparency : {0.999f, 0.0f, 1.001f, -1.0f}) {
        material.setTransparency(transparency);
        EXPECT_EQ(material.getTransparency(), transparency);
        EXPECT_TRUE(material.isTransparent());
    }
    material.setTransparency(1.0f);
    EXPECT_FALSE(material.isTransparent());
}

TEST_F(Material, SlotsCountReferences) {
    RVTEXTURE *a = new RVTEXTURE, *b = new RVTEXTURE;
    EXPECT_TRUE(material.setTexture(0, a));
    EXPECT_TRUE(material.setTexture(15, a));
    EXPECT_EQ(a->getReferences(), 2);
    EXPECT_EQ(material.getTexture(15), a);
    EXPECT_TRUE(material.setTexture(0, b));
    EXPECT_EQ(a->getReferences(), 1);
    EXPECT_EQ(b->getReferences(), 1);
    EXPECT_TRUE(material.setTexture(0, b));
    EXPECT_EQ(b->getReferences(), 1);
    EXPECT_TRUE(material.setTexture(0, nullptr));
    EXPECT_EQ(b->getReferences(), 0);
    EXPECT_EQ(material.getTexture(0), nullptr);
    EXPECT_TRUE(material.setTexture(0, nullptr));
    EXPECT_NOTHING_LOGGED();
}

TEST_F(Material, BadSlotsAreRefused) {
    RVTEXTURE *texture = new RVTEXTURE;
    for (const unsigned int slot : {16u, 17u, 0xffffffffu}) {
        EXPECT_FALSE(material.setTexture(slot, texture));
        EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVMATERIAL::setTexture\n");
        EXPECT_EQ(material.getTexture(slot), nullptr);
    }
    EXPECT_EQ(texture->getReferences(), 0);
}

TEST_F(Material, OnlySlot0MakesItTextured) {
    RVTEXTURE *texture = new RVTEXTURE;
    material.setTexture(3, texture);
    EXPECT_FALSE(material.isTextured());
    material.setTexture(0, texture);
    EXPECT_TRUE(material.isTextured());
}

TEST_F(Material, DeletedMaterialLeavesItsTexturesReferences) {
    RVTEXTURE *texture = new RVTEXTURE;
    RVMATERIAL *second = new RVMATERIAL;
    second->setTexture(0, texture);
    delete second;
    EXPECT_EQ(texture->getReferences(), 1);
}

TEST_F(Material, SlotsOfADeletedTextureAreEmpty) {
    RVTEXTURE *const wall = new RVTEXTURE, *const floor = new RVTEXTURE;
    RVMATERIAL *const other = new RVMATERIAL, *const twin = new RVMATERIAL;
    material.setTexture(0, wall);
    material.setTexture(1, floor);
    material.setTexture(15, wall);
    other->setTexture(3, wall);
    other->setTexture(3, floor); // no more
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

    RVTEXTURE *const next = new RVTEXTURE; // perhaps where the first one was
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

// The collector takes what nothing counts as its own, and a clone counts nothing.
TEST_F(Material, SlotsOfACloneAreEmptyWhenTheCollectorTakesTheirTexture) {
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

TEST_F(Material, ADeletedProgramIsExplicitNoMore) {
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

TEST_F(Material, CloneTakesTheSurfaceAndNoReferences) {
    RVTEXTURE *texture = new RVTEXTURE;
    RVMATERIAL *source = new RVMATERIAL;
    source->setName("stone");
    source->setAmbient(1, 2, 3, 4);
    source->setDiffuse(2, 3, 4, 5);
    source->setSpecular(3, 4, 5, 6);
    source->setEmission(4, 5, 6, 7);
    source->setTransparency(0.25f);
    source->setShininess(9);
    source->setTexture(7, texture);
    source->setShader(reinterpret_cast<RVSHADER *>(source)); // never followed
    source->setSkinning(true);
    source->incReferences();
    material.clone(source);
    EXPECT_EQ(material.getName(), "stone" + std::to_string(material.getId()));
    EXPECT_TRUE(isColor(material.getAmbient(), 1, 2, 3, 4));
    EXPECT_TRUE(isColor(material.getDiffuse(), 2, 3, 4, 5));
    EXPECT_TRUE(isColor(material.getSpecular(), 3, 4, 5, 6));
    EXPECT_TRUE(isColor(material.getEmission(), 4, 5, 6, 7));
    EXPECT_EQ(material.getTransparency(), 0.25f);
    EXPECT_EQ(material.getShininess(), 9.0f);
    EXPECT_EQ(material.getTexture(7), texture);
    EXPECT_EQ(material.getShader(), source->getShader());
    EXPECT_EQ(texture->getReferences(), 1);
    EXPECT_FALSE(material.isSkinned());
    EXPECT_EQ(material.getReferences(), 0);
}

TEST_F(Material, CloneOfNothingOrOfItself) {
    const std::string name = material.getName();
    material.clone(nullptr);
    EXPECT_EQ(material.getName(), name);
    material.clone(&material);
    EXPECT_EQ(material.getName(), name + std::to_string(material.getId()));
}

TEST_F(Material, CloneOfALongNameIsCut) {
    RVMATERIAL *source = new RVMATERIAL;
    source->setName(std::string(255, 'n').c_str());
    material.clone(source);
    EXPECT_EQ(material.getName(), std::string(255, 'n'));
}

} // namespace

} // namespace ravolt::test
