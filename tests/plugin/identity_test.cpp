// Entry points, factory records and the run-time identity of the GL classes.
#include "core/visitor.h"
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
    bool RegisterClass(ClassContainer* record) override {
        records.emplace_back(record);
        return false;  // the plug-in does not look at it
    }
    std::vector<std::unique_ptr<ClassContainer>> records;
};

class LoggingVisitor : public Visitor {
  public:
    void VisitNode(Node&) override { log += "Node "; }
    void VisitTransformNode(TransformNode&) override { log += "TransformNode "; }
    void VisitCamera(Camera&) override { log += "Camera "; }
    void VisitLight(Light&) override { log += "Light "; }
    void VisitTimeline(Timeline&) override { log += "Timeline "; }
    void VisitChildren(List<Node*>& list) override {
        log += "children";
        children = &list;
    }
    std::string log;
    List<Node*>* children = nullptr;
};

// What the record makes: itself and what stands above it, and nothing else.
template <typename T>
void ExpectIdentity(ClassContainer& record, ClassId id, std::string const& name,
                    char const* visit = nullptr) {
    constexpr char16_t const* kNames[] = {
        u"TimelineGL", u"Timeline", u"CameraGL",      u"Camera", u"SpriteGL",  u"Sprite",
        u"TextGL",     u"Text",     u"FontGL",        u"Font",   u"TextureGL", u"Texture",
        u"ShaderGL",   u"Shader",   u"TransformNode", u"Node",   u"Light"};
    SCOPED_TRACE(name);
    const RefT<T> object(static_cast<T*>(record.Create()));
    EXPECT_EQ(object->references, 1);
    EXPECT_EQ(record.classId, id);
    EXPECT_EQ(object->GetClassName(), name + "GL");
    EXPECT_EQ(object->GetClassId(), MakeClassId((std::u16string(name.begin(), name.end()) + u"GL").c_str()));
    for (char16_t const* other : kNames) {
        const std::u16string_view text = other;
        const std::string ascii(text.begin(), text.end());
        const bool above = visit != nullptr && (ascii == "TransformNode" || ascii == "Node");
        EXPECT_EQ(object->IsKindOf(MakeClassId(other)), above || ascii == name || ascii == name + "GL")
            << ascii;
    }
    if constexpr (std::is_base_of_v<Node, T>) {
        LoggingVisitor visitor;
        object->Visit(visitor);
        EXPECT_EQ(visitor.log, visit);
        EXPECT_EQ(visitor.children, &object->GetChildren());
    }
}

TEST(EntryPoints, RegisterSevenRecordsInOrder) {
    KeepingRegistry registry;
    EXPECT_EQ(Initialize(&registry), 1u);
    ASSERT_EQ(registry.records.size(), 7u);
    auto const& made = registry.records;
    ExpectIdentity<TimelineGL>(*made[0], 0x19930C9C, "Timeline", "Timeline children");
    ExpectIdentity<CameraGL>(*made[1], 0x2B4171CE, "Camera", "Camera children");
    ExpectIdentity<SpriteGL>(*made[2], 0x51A63A9C, "Sprite", "TransformNode children");
    ExpectIdentity<TextureGL>(*made[3], 0x3A31AD76, "Texture");
    ExpectIdentity<TextGL>(*made[4], 0x7C8CDCEA, "Text", "TransformNode children");
    ExpectIdentity<FontGL>(*made[5], 0x7C8558DC, "Font");
    ExpectIdentity<ShaderGL>(*made[6], 0x510C0CFC, "Shader");
    EXPECT_EQ(ClassContainer(1).Create(), nullptr);
    delete static_cast<GraphicsDevice*>(CreateDevice());
    Shutdown();
}

TEST(Identity, ReferencesStartAtZeroBehindTheTable) {
    SpriteGL sprite;
    EXPECT_EQ(sprite.references, 0);
    EXPECT_EQ(reinterpret_cast<char*>(&sprite.references) - reinterpret_cast<char*>(&sprite),
              static_cast<ptrdiff_t>(sizeof(void*)));
    sprite.references = 1;
    EXPECT_EQ(SpriteGL(sprite).references, 0);
    sprite.references = 0;
}

}  // namespace
}  // namespace zorvan
