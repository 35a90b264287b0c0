// Entry points, factory records and the run-time identity of the GL classes.
#include <type_traits>

#include "graphics/class_container.h"
#include "graphics/plugin.h"
#include "objects/font.h"
#include "objects/text.h"
#include "objects/timeline.h"
#include "tests/plugin/fixture.h"

namespace zorvan {
namespace {

class KeepingRegistry : public ClassRegistry {
  public:
    ~KeepingRegistry() override {
        for (ClassContainer* record : records) {
            delete record;
        }
    }
    bool RegisterClass(ClassContainer* record) override {
        records.push_back(record);
        return false;  // the plug-in does not look at it
    }
    std::vector<ClassContainer*> records;
};

TEST(ClassIds, CheckValues) {
    const std::pair<char16_t const*, ClassId> cases[] = {{u"Timeline", 0x19930C9C},
                                                         {u"Camera", 0x2B4171CE},
                                                         {u"Sprite", 0x51A63A9C},
                                                         {u"Texture", 0x3A31AD76},
                                                         {u"Text", 0x7C8CDCEA},
                                                         {u"Font", 0x7C8558DC},
                                                         {u"Shader", 0x510C0CFC},
                                                         {u"CameraGL", 0x016526C1},
                                                         {u"TransformNode", 0x71A430E7},
                                                         {u"Node", 0x7C89BA8B},
                                                         {u"", 5381}};
    for (auto const& [name, id] : cases) {
        EXPECT_EQ(MakeClassId(name), id);
    }
}

TEST(EntryPoints, RegisterSevenRecordsInOrder) {
    KeepingRegistry registry;
    EXPECT_EQ(Initialize(&registry), 1u);
    constexpr ClassId kIds[] = {0x19930C9C, 0x2B4171CE, 0x51A63A9C, 0x3A31AD76,
                                0x7C8CDCEA, 0x7C8558DC, 0x510C0CFC};
    ASSERT_EQ(registry.records.size(), std::size(kIds));
    for (size_t i = 0; i < registry.records.size(); ++i) {
        EXPECT_EQ(registry.records[i]->classId, kIds[i]);
    }
    const auto made = [&registry](size_t index) { return registry.records[index]->Create(); };
    EXPECT_EQ(ClassContainer(1).Create(), nullptr);
    const std::pair<size_t, char const*> nodes[] = {
        {0, "TimelineGL"}, {1, "CameraGL"}, {2, "SpriteGL"}, {4, "TextGL"}};
    for (auto const& [index, name] : nodes) {
        RefT<Node> node(static_cast<Node*>(made(index)));
        EXPECT_STREQ(node->GetClassName(), name);
    }
    EXPECT_STREQ(
        static_cast<TextureGL*>(RefT<Referenced>(static_cast<Referenced*>(made(3))).Get())->GetClassName(),
        "TextureGL");
    EXPECT_STREQ(
        static_cast<FontGL*>(RefT<Referenced>(static_cast<Referenced*>(made(5))).Get())->GetClassName(),
        "FontGL");
    EXPECT_STREQ(
        static_cast<ShaderGL*>(RefT<Referenced>(static_cast<Referenced*>(made(6))).Get())->GetClassName(),
        "ShaderGL");
    delete static_cast<GraphicsDevice*>(CreateDevice());
    Shutdown();
}

// Each class is itself and what stands above it, and nothing else.
TEST(Identity, Chains) {
    constexpr char16_t const* kNames[] = {
        u"TimelineGL", u"Timeline", u"CameraGL",      u"Camera", u"SpriteGL",  u"Sprite",
        u"TextGL",     u"Text",     u"FontGL",        u"Font",   u"TextureGL", u"Texture",
        u"ShaderGL",   u"Shader",   u"TransformNode", u"Node",   u"Light"};
    const auto check = [&kNames]<typename T>(T& object, size_t first, bool isNode) {
        EXPECT_EQ(object.GetClassId(), MakeClassId(kNames[first]));
        for (size_t i = 0; i < std::size(kNames); ++i) {
            const bool expected = i == first || i == first + 1 || (isNode && (i == 14 || i == 15));
            EXPECT_EQ(object.IsKindOf(MakeClassId(kNames[i])), expected) << object.GetClassName() << ' ' << i;
        }
    };
    TimelineGL timeline;
    CameraGL camera;
    SpriteGL sprite;
    TextGL text;
    FontGL font;
    TextureGL texture;
    ShaderGL shader;
    check(timeline, 0, true);
    check(camera, 2, true);
    check(sprite, 4, true);
    check(text, 6, true);
    check(font, 8, false);
    check(texture, 10, false);
    check(shader, 12, false);
}

TEST(Identity, ReferencesStartAtZeroBehindTheTable) {
    SpriteGL sprite;
    EXPECT_EQ(sprite.references, 0);
    EXPECT_EQ(reinterpret_cast<char*>(&sprite.references) - reinterpret_cast<char*>(&sprite),
              static_cast<ptrdiff_t>(sizeof(void*)));
    Retain(&sprite);
    const SpriteGL copy(sprite);
    EXPECT_EQ(copy.references, 0);
    sprite.references = 0;
}

}  // namespace
}  // namespace zorvan
