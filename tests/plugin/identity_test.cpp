// Entry points, factory records and the run-time identity of the GL classes.
#include "core/visitor.h"
#include "graphics/class_container.h"
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
    void VisitChildren(List<Node*>& list) override { log += std::to_string(list.Count()); }
    std::string log;
};

// What the record makes is itself and what stands above it, and nothing else.
template <typename T>
void ExpectIdentity(ClassContainer& record, ClassId id, std::string const& name, char const* visit = "") {
    SCOPED_TRACE(name);
    const RefT<T> object(static_cast<T*>(record.Create()));
    EXPECT_EQ(object->references, 1);
    EXPECT_EQ(record.classId, id);
    EXPECT_EQ(object->GetClassName(), name + "GL");
    for (std::u16string const other :
         {u"TimelineGL", u"Timeline", u"CameraGL", u"Camera", u"SpriteGL", u"Sprite", u"TextGL", u"Text",
          u"FontGL", u"Font", u"TextureGL", u"Texture", u"ShaderGL", u"Shader", u"TransformNode", u"Node",
          u"Light"}) {
        const std::string ascii(other.begin(), other.end());
        const bool own = ascii == name + "GL";
        const bool node = std::is_base_of_v<Node, T> && (other == u"TransformNode" || other == u"Node");
        EXPECT_EQ(object->IsKindOf(MakeClassId(other.c_str())), own || ascii == name || node) << ascii;
        EXPECT_EQ(object->GetClassId() == MakeClassId(other.c_str()), own);
    }
    if constexpr (std::is_base_of_v<Node, T>) {
        LoggingVisitor visitor;
        object->Attach(new TransformNode);
        object->Visit(visitor);
        EXPECT_EQ(visitor.log, visit);
    }
}

TEST(EntryPoints, RegisterSevenRecordsInOrder) {
    KeepingRegistry registry;
    EXPECT_EQ(Initialize(&registry), 1u);
    auto const& made = registry.records;
    ASSERT_EQ(made.size(), 7u);
    ExpectIdentity<TimelineGL>(*made[0], 0x19930C9C, "Timeline", "Timeline 1");
    ExpectIdentity<CameraGL>(*made[1], 0x2B4171CE, "Camera", "Camera 1");
    ExpectIdentity<SpriteGL>(*made[2], 0x51A63A9C, "Sprite", "TransformNode 1");
    ExpectIdentity<TextureGL>(*made[3], 0x3A31AD76, "Texture");
    ExpectIdentity<TextGL>(*made[4], 0x7C8CDCEA, "Text", "TransformNode 1");
    ExpectIdentity<FontGL>(*made[5], 0x7C8558DC, "Font");
    ExpectIdentity<ShaderGL>(*made[6], 0x510C0CFC, "Shader");
    EXPECT_EQ(ClassContainer(1).Create(), nullptr);
    delete static_cast<GraphicsDevice*>(CreateDevice());
    Shutdown();
}

}  // namespace
}  // namespace zorvan
