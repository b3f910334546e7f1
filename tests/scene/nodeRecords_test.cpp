// The records of nodes and lights in scene files.

#include "scene/nodeRecords.h"

#include "foundation/bytes.h"
#include "tests/scene/sceneProbes.h"
#include "tests/support/logReader.h"
#include "tests/support/recorder.h"

using namespace ravolt::test;

namespace {

struct PlainNode {
    using Node = RVNODE;
    using Record = ravolt::PlainNodeRecord;
    static constexpr auto read = ravolt::readPlainNodeRecord;
    static constexpr const char *refused =
        "   [!] Consistency error: node == NULL @ RVNODE::load\n";
    static Bytes body(const std::string &name, std::uint16_t children) {
        return plainNodeBody(name, children);
    }
};

struct Light {
    using Node = RVLIGHT;
    using Record = ravolt::LightRecord;
    static constexpr auto read = ravolt::readLightRecord;
    static constexpr const char *refused =
        "   [!] Consistency error: light == NULL @ RVLIGHT::load\n";
    static Bytes body(const std::string &name, std::uint16_t children) {
        return lightBody(name, 2, children);
    }
};

template <class Kind> class NodeRecords : public RecorderTest {
  protected:
    void SetUp() override { markLog(); }
    void TearDown() override {
        RVNODE::cleanUp();
        RecorderTest::TearDown();
    }

    void expectRefused(const Bytes &body) {
        long cursor = -1;
        EXPECT_EQ(loadNode<typename Kind::Node>(body, &cursor), nullptr);
        recorder.allocationsWork();
        EXPECT_LOGGED_EXACTLY(Kind::refused);
        EXPECT_EQ(cursor, 0);
        EXPECT_EQ(RVNODE::getNumberOfNodes(), 0u);
    }
};
using Kinds = testing::Types<PlainNode, Light>;
TYPED_TEST_SUITE(NodeRecords, Kinds);

TYPED_TEST(NodeRecords, NamesHaveUpTo255Characters) {
    const std::string name(255, 'n');
    this->expectRefused(TypeParam::body(name + "n", 0));
    const RVNODE *node = loadNode<typename TypeParam::Node>(TypeParam::body(name, 0));
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(node->getName(), name);
}

TYPED_TEST(NodeRecords, WithoutMemoryNothingIsMade) {
    for (const std::size_t failing : {sizeof(typename TypeParam::Node), 2000 * sizeof(RVNODE *)}) {
        const Bytes body = TypeParam::body("name", 2000);
        this->recorder.failAllocation(failing);
        this->expectRefused(body);
    }
}

TYPED_TEST(NodeRecords, TruncatedRecordsAreRefused) {
    const Bytes body = TypeParam::body("name", 0);
    for (std::size_t size = 0; size <= body.size(); ++size) {
        const auto bytes = body.exact(size);
        ravolt::ByteReader reader(bytes.get(), size);
        typename TypeParam::Record record;
        EXPECT_EQ(TypeParam::read(reader, record), size == body.size()) << size;
    }
}

using PlainNodeRecords = NodeRecords<PlainNode>;
using LightRecords = NodeRecords<Light>;

TEST_F(PlainNodeRecords, LoadReadsThemFromTheCursorOn) {
    const Bytes body = plainNodeBody("from file", 3);
    const std::string file = "?" + std::string(body.exact().get(), body.size());
    long cursor = 1;
    const RVNODE *node = RVNODE::load(file.data(), &cursor);
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(cursor, static_cast<long>(file.size()));
    EXPECT_EQ(node->getAuxId(), 77u);
    EXPECT_STREQ(node->getName(), "from file");
    EXPECT_EQ(node->getPosition(), Z3MVECTOR3D(1, 2, 3));
    EXPECT_EQ(node->getOrigin(), Z3MVECTOR3D(10, 20, 30));
    EXPECT_EQ(node->getNumberOfChildren(), 3u);
    EXPECT_EQ(node->getType(), RV_NODE_TYPE_NODE);
}

TEST_F(LightRecords, LoadReadsThem) {
    const Bytes body = lightBody("lamp", 2, 1);
    long cursor = 0;
    const RVLIGHT *light = loadNode<RVLIGHT>(body, &cursor);
    ASSERT_NE(light, nullptr);
    EXPECT_EQ(light->getType(), RV_NODE_TYPE_LIGHT);
    EXPECT_EQ(cursor, static_cast<long>(body.size()));
    EXPECT_STREQ(light->getName(), "lamp");
    EXPECT_EQ(light->getLightType(), RV_LIGHT_TYPE_SPOT);
    EXPECT_EQ(light->getPosition(), Z3MVECTOR3D(1, 2, 3));
    EXPECT_EQ(light->getDirection(), Z3MVECTOR3D(4, 5, 6));
    EXPECT_EQ(light->getTarget(), Z3MVECTOR3D(5, 7, 9));
    EXPECT_EQ(light->getTargetNode(), nullptr);
    EXPECT_EQ(light->getCutOff(), 35);
    EXPECT_EQ(light->getAmbient(), Z3MVECTOR4D(1.0f / 5, 0.5f / 5, 0.25f / 5, 1));
    EXPECT_EQ(light->getDiffuse(), Z3MVECTOR4D(1, 0.5, 0.25, 1));
    EXPECT_EQ(light->getSpecular(), Z3MVECTOR4D(1.0f / 10, 0.5f / 10, 0.25f / 10, 1));
    EXPECT_EQ(light->getNumberOfChildren(), 1u);
    EXPECT_EQ(light->getChild(0), nullptr);
}

} // namespace
