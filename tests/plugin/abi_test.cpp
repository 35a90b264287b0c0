// The binary interface between the core and the plug-in, as the Itanium C++ ABI lays it out on x86-64: the
// order and number of virtual operations, the exported symbols and the load-time initialisers. The plug-in is
// loaded as the host does it.
#include <cxxabi.h>
#include <dlfcn.h>
#include <elf.h>
#include <gtest/gtest.h>
#include <link.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <string_view>

#include "core/class_registry.h"
#include "core/light.h"
#include "core/visitor.h"
#include "graphics/camera.h"
#include "graphics/device.h"
#include "objects/font.h"
#include "objects/sprite.h"
#include "objects/text.h"
#include "objects/texture.h"
#include "objects/timeline.h"
#include "shaders/shader.h"

namespace zorvan {
namespace {

using Names = std::vector<std::string>;

void* PlugIn() {
    static void* handle = dlopen(ZORVAN_PLUGIN_PATH, RTLD_NOW | RTLD_LOCAL);
    return handle;
}

template <typename Function>
Function Look(char const* name) {
    void* address = dlsym(PlugIn(), name);
    EXPECT_NE(address, nullptr) << name;
    return reinterpret_cast<Function>(address);
}

std::string Demangled(char const* symbol) {
    int status = 0;
    const std::unique_ptr<char, void (*)(void*)> text(abi::__cxa_demangle(symbol, nullptr, nullptr, &status),
                                                      std::free);
    return status == 0 ? text.get() : symbol;
}

// Without the namespace: "Node::Attach(Node*)".
std::string Short(std::string name) {
    constexpr std::string_view kNamespace = "zorvan::";
    for (size_t at = name.find(kNamespace); at != std::string::npos; at = name.find(kNamespace)) {
        name.erase(at, kNamespace.size());
    }
    return name;
}

std::string WithoutArguments(std::string name) {
    return name.substr(0, name.find('('));
}

// ---- The tables in the library itself.

class ElfFile {
  public:
    explicit ElfFile(char const* path) {
        std::ifstream file(path, std::ios::binary);
        bytes_.assign(std::istreambuf_iterator<char>(file), {});
    }
    Elf64_Shdr const* Section(uint32_t type) const {
        auto const* header = At<Elf64_Ehdr>(0);
        for (size_t i = 0; i < header->e_shnum; ++i) {
            auto const* section = At<Elf64_Shdr>(header->e_shoff + i * sizeof(Elf64_Shdr));
            if (section->sh_type == type) {
                return section;
            }
        }
        return nullptr;
    }
    // The defined dynamic symbols, by their offset from the load address. Several may share one: the compiler
    // folds functions that do the same.
    std::multimap<uintptr_t, std::string> Exports() const {
        Elf64_Shdr const* table = Section(SHT_DYNSYM);
        auto const* strings =
            At<Elf64_Shdr>(At<Elf64_Ehdr>(0)->e_shoff + table->sh_link * sizeof(Elf64_Shdr));
        std::multimap<uintptr_t, std::string> symbols;
        for (size_t at = sizeof(Elf64_Sym); at < table->sh_size; at += sizeof(Elf64_Sym)) {
            auto const* symbol = At<Elf64_Sym>(table->sh_offset + at);
            if (symbol->st_shndx != SHN_UNDEF) {
                symbols.emplace(symbol->st_value, At<char>(strings->sh_offset + symbol->st_name));
            }
        }
        return symbols;
    }

  private:
    template <typename T>
    T const* At(size_t offset) const {
        return reinterpret_cast<T const*>(bytes_.data() + offset);
    }
    std::vector<char> bytes_;
};

struct Table {
    void* const* words;
    size_t size;
};

Table VirtualTable(std::string const& mangledClass) {
    void* address = dlsym(PlugIn(), ("_ZTV" + mangledClass).c_str());
    EXPECT_NE(address, nullptr) << mangledClass;
    Dl_info info;
    ElfW(Sym)* symbol = nullptr;
    if (address == nullptr ||
        dladdr1(address, &info, reinterpret_cast<void**>(&symbol), RTLD_DL_SYMENT) == 0 ||
        symbol == nullptr) {
        ADD_FAILURE() << "no table of " << mangledClass;
        return {};
    }
    return {static_cast<void* const*>(address), symbol->st_size};
}

std::string MangledClass(std::string const& name) {
    return "N6zorvan" + std::to_string(name.size()) + name + "E";
}

// The exported symbols at an address, demangled: empty when no exported function starts there.
Names SymbolsAt(void* address) {
    static std::map<std::string, std::multimap<uintptr_t, std::string>> files;
    Dl_info info;
    if (dladdr(address, &info) == 0) {
        return {};
    }
    if (files.count(info.dli_fname) == 0) {
        files[info.dli_fname] = ElfFile(info.dli_fname).Exports();
    }
    const auto [first, last] = files[info.dli_fname].equal_range(reinterpret_cast<uintptr_t>(address) -
                                                                 reinterpret_cast<uintptr_t>(info.dli_fbase));
    Names names;
    std::transform(first, last, std::back_inserter(names),
                   [](auto const& symbol) { return Demangled(symbol.second.c_str()); });
    return names;
}

bool Holds(Names const& names, std::string const& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

TEST(Tables, Sizes) {
    const std::pair<char const*, size_t> sizes[] = {{"SpriteGL", 272},    {"CameraGL", 264},
                                                    {"TextGL", 256},      {"TimelineGL", 392},
                                                    {"FontGL", 72},       {"TextureGL", 56},
                                                    {"ShaderGL", 56},     {"GraphicsDeviceGL", 272},
                                                    {"ShaderSource", 32}, {"SolidVertexShaderSource", 32}};
    for (auto const& [name, size] : sizes) {
        EXPECT_EQ(VirtualTable(MangledClass(name)).size, size) << name;
    }
    for (char const* name :
         {"10TimelineGL", "8CameraGL", "8SpriteGL", "9TextureGL", "6TextGL", "6FontGL", "8ShaderGL"}) {
        EXPECT_EQ(VirtualTable("N6zorvan15ClassContainerTINS_" + std::string(name) + "EEE").size, 40u)
            << name;
    }
}

Names Split(std::string const& list) {
    std::istringstream stream(list);
    Names names;
    for (std::string name; std::getline(stream, name, ';');) {
        names.push_back(name);
    }
    return names;
}

// From slot 3 on. Overloads stand with their arguments.
constexpr char kNodeSlots[] =
    "Clone;GetClassName;GetClassId;Visit;CloneDeep;IsKindOf;SetUserData;GetUserData();GetUserData() const;"
    "Attach;AttachBefore;AttachAfter;Detach;GetWorldMatrix;Update(GraphicsDevice&, RealFixed const&);"
    "Update(GraphicsDevice&, RealFixed const&, RealFixed const&, bool);Render;Save;Load;RegisterProperties;"
    "InternalUpdate;InternalRender;InternalSelect;InternalSave;InternalLoad;AddMask;CalculateTransform;"
    "IsSelect;";
constexpr char kDeviceSlots[] =
    "Initialize;Reset;SetClearColor;GetClearColor;Clear;SetViewport(RectangleT<int> const&);"
    "SetViewport(int, int, int, int);GetViewport;ProjectCoordinate;SetRenderMode;SetSelectionMode;"
    "GetSelectionPoint;PushSelected;Present;ReadPixels;PushOpacity;PopOpacity;MergeOpacity;GetOpacity;"
    "PushTransformMatrix;PopTransformMatrix;MergeTransformMatrix;PushMasks;PopMasks;PushCamera;PushCamera2D;"
    "PopCamera;PushCameraDepth;PopCameraDepth;SetCameraDepth;";
constexpr char kFontSlots[] =
    "Initialize;DrawString(GraphicsDevice&, MStringT<wchar_t> const&, ColorT<RealFixed> const&, int, int);"
    "DrawString(GraphicsDevice&, MStringT<wchar_t> const&, ColorT<RealFixed> const&, SizeT<RealFixed> "
    "const&, int, "
    "int, int);GenerateID;RenderGlyph;";

// Whether a function, as Short gives it, is the named one of the owner: a core class for an empty owner.
bool Is(std::string const& function, std::string const& owner, std::string const& name) {
    const size_t end = function.find('(');
    const size_t colons = function.rfind("::", end);
    if (end == std::string::npos || colons == std::string::npos) {
        return false;
    }
    const std::string in = function.substr(0, colons);
    const bool named = name.find('(') == std::string::npos
                           ? function.substr(colons + 2, end - colons - 2) == name
                           : function.substr(colons + 2) == name;
    return named && (owner.empty() ? !in.ends_with("GL") : in == owner);
}

// Which functions stand in the slots: the class's own in those that it overrides, the core's elsewhere.
TEST(Tables, Overriders) {
    const std::string node = kNodeSlots;
    struct Case {
        char const* name;
        std::string slots;
        std::set<size_t> own;
    };
    const Case cases[] = {
        {"CameraGL", node + "CalculateProjection", {3, 4, 5, 6, 7, 8, 22, 23, 31}},
        {"SpriteGL", node + "GetTexture;SetTexture", {3, 4, 5, 6, 7, 8, 21, 23, 24, 32}},
        {"TextGL", node, {3, 4, 5, 6, 7, 8, 23, 24}},
        {"TimelineGL",
         node +
             "AttachAndUpdate;Play;Stop;GetFrame;SetFrame;UpdateSynchronous;ProcessPlaybackMode;UpdateTree;"
             "BuildUpdateTree",
         {3, 4, 5, 6, 7, 8, 24}},
        {"FontGL", kFontSlots, {3, 7}},
        {"TextureGL", "Compress;Save;Load", {3}},
        {"ShaderGL", "Save;Load;Compile", {4, 5}},
        {"GraphicsDeviceGL", kDeviceSlots, {3, 5, 7, 8, 9, 11, 16, 17, 25, 26, 27, 28, 29, 30, 31, 32}},
        {"ShaderSource", "", {}},
    };
    for (Case const& c : cases) {
        const std::string name = c.name;
        const std::string mangled = "_ZN6zorvan" + std::to_string(name.size()) + name;
        const Names functions = Split(c.slots);
        const Table table = VirtualTable(MangledClass(name));
        ASSERT_GE(table.size, (functions.size() + 4) * sizeof(void*)) << name;
        EXPECT_EQ(table.words[0], nullptr) << name;
        EXPECT_EQ(table.words[2], dlsym(PlugIn(), (mangled + "D1Ev").c_str())) << name;
        EXPECT_EQ(table.words[3], dlsym(PlugIn(), (mangled + "D0Ev").c_str())) << name;
        EXPECT_NE(table.words[2], nullptr) << name;
        for (size_t i = 0; i < functions.size(); ++i) {
            const size_t slot = i + 3;
            const std::string owner = c.own.count(slot) == 1 ? name : "";
            const Names symbols = SymbolsAt(table.words[slot + 1]);
            EXPECT_TRUE(std::any_of(
                symbols.begin(), symbols.end(),
                [&](std::string const& symbol) { return Is(Short(symbol), owner, functions[i]); }))
                << name << ' ' << slot << ' ' << functions[i] << ", found "
                << testing::PrintToString(symbols);
        }
    }
}

TEST(Tables, PlaybackBase) {
    const Table table = VirtualTable(MangledClass("TimelineGL"));
    ASSERT_EQ(table.size, 392u);
    void* const* second = table.words + 2 + 39;
    EXPECT_LT(reinterpret_cast<intptr_t>(second[0]), 0);
    EXPECT_EQ(second[1], table.words[1]);
    for (int i = 2; i < 4; ++i) {
        EXPECT_TRUE(Holds(SymbolsAt(second[i]), "non-virtual thunk to zorvan::TimelineGL::~TimelineGL()"))
            << i;
    }
    constexpr char const* kPlayback[] = {"Play()", "Stop()", "GetFrame() const",
                                         "SetFrame(zorvan::RealFixed const&)"};
    for (int i = 0; i < 4; ++i) {
        EXPECT_TRUE(Holds(SymbolsAt(second[4 + i]),
                          std::string("non-virtual thunk to zorvan::Timeline::") + kPlayback[i]))
            << kPlayback[i];
    }
}

// ---- Core interfaces as the plug-in calls them: fakes whose operations record their numbers.

class FakeRegistry {
  public:
    virtual void First() { calls.push_back(1); }
    virtual void Second() { calls.push_back(2); }
    virtual bool Third(ClassContainer* record) {
        calls.push_back(3);
        records.emplace_back(record);
        return false;
    }
    virtual void Fourth() { calls.push_back(4); }
    std::vector<int> calls;
    std::vector<std::unique_ptr<ClassContainer>> records;

  protected:
    ~FakeRegistry() = default;
};

class LocalRegistry final : public FakeRegistry {};

class FakeVisitor final {
  public:
    virtual void First(void*) { calls.push_back(1); }
    virtual void Second(void*) { calls.push_back(2); }
    virtual void Third(void*) { calls.push_back(3); }
    virtual void Fourth(void*) { calls.push_back(4); }
    virtual void Fifth(void*) { calls.push_back(5); }
    virtual void Sixth(List<Node*>* list) {
        calls.push_back(6);
        children = list;
    }
    std::vector<int> calls;
    List<Node*>* children = nullptr;
};

class FakeLight : public TransformNode {
  public:
    virtual void ThirtyFirst(GraphicsDevice& device) { asked = &device; }
    GraphicsDevice* asked = nullptr;
};

TEST(CoreCalls, RegistryVisitorAndLight) {
    ASSERT_NE(PlugIn(), nullptr) << dlerror();
    LocalRegistry registry;
    EXPECT_EQ(Look<uint32_t (*)(void*)>("Initialize")(&registry), 1u);
    EXPECT_EQ(registry.calls, std::vector<int>(7, 3));
    ASSERT_EQ(registry.records.size(), 7u);

    const std::pair<size_t, int> cases[] = {{0, 5}, {1, 3}, {2, 2}, {4, 2}};
    for (auto const& [record, number] : cases) {
        RefT<Node> node(static_cast<Node*>(registry.records[record]->Create()));
        FakeVisitor visitor;
        Visitor* disguised = nullptr;
        FakeVisitor* const fake = &visitor;
        std::memcpy(&disguised, &fake, sizeof fake);
        node->Visit(*disguised);
        EXPECT_EQ(visitor.calls, (std::vector<int>{number, 6})) << record;
        EXPECT_EQ(visitor.children, &node->GetChildren());
    }

    const std::unique_ptr<GraphicsDevice> device(
        static_cast<GraphicsDevice*>(Look<void* (*)()>("CreateDevice")()));
    RefT<FakeLight> light(new FakeLight);
    Look<void (*)(void*, void*)>("_ZN6zorvan16GraphicsDeviceGL8AddLightEPNS_5LightE")(device.get(),
                                                                                      light.Get());
    Look<void (*)(void*)>("_ZN6zorvan16GraphicsDeviceGL11SetupLightsEv")(device.get());
    EXPECT_EQ(light->asked, device.get());
    Atomic::Decrement(light->references);
    Look<void (*)()>("Shutdown")();
}

TEST(PlugInFile, LoadTimeInitialisers) {
#if defined(__clang__)
    GTEST_SKIP() << "Clang merges the guarded set-ups of the identity matrix into one entry";
#else
    const ElfFile file(ZORVAN_PLUGIN_PATH);
    Elf64_Shdr const* initialisers = file.Section(SHT_INIT_ARRAY);
    ASSERT_NE(initialisers, nullptr);
    EXPECT_EQ(initialisers->sh_size / sizeof(void*), 7u + 1u);  // the compiler's own frame_dummy
#endif
}

TEST(PlugInFile, Exports) {
    const std::set<std::string> plain = {
        "Initialize",
        "CreateDevice",
        "Shutdown",
        "Qonvert",
        "TxCompressEncode",
        "TxCompressDecode",
        "TxCompressQueryEncodeBufferSize",
        "TxCompressQueryDecodeBufferSize",
        "TxCompressDecodeFileData",
        "ATI_TC_EncodeImage",
        "ATI_TC_EncodeImage_Seperate_Header",
        "ATI_TC_EncodeImageFast_Seperate_Header",
        "ATI_TC_DecodeImage",
        "ATI_TC_DecodeImage_Seperate_Header",
        "zorvan::CompressTextureAti(zorvan::TextureGL&)",
        "zorvan::operator*(zorvan::Matrix4T<zorvan::RealFixed> const&, zorvan::Vector4T<zorvan::RealFixed> "
        "const&)",
        "zorvan::operator*(zorvan::Matrix4T<zorvan::DoubleRealFixed> const&, "
        "zorvan::Vector4T<zorvan::DoubleRealFixed> const&)"};
    // Members that must be there, besides constructors, destructors and tables.
    const std::map<std::string, Names> classes = {
        {"GraphicsDeviceGL", {"Initialize",        "SetClearColor",  "Clear",          "SetViewport",
                              "ProjectCoordinate", "Present",        "ReadPixels",     "PushMasks",
                              "PopMasks",          "PushCamera",     "PushCamera2D",   "PopCamera",
                              "PushCameraDepth",   "PopCameraDepth", "SetCameraDepth", "GetProjectionMatrix",
                              "GetViewMatrix",     "AddLight",       "RemoveLight",    "LightCount",
                              "SetupLights"}},
        {"CameraGL", {"RegisterProperties", "InternalUpdate", "CalculateProjection", "Clone", "Visit"}},
        {"SpriteGL",
         {"Load", "SetTexture", "SetGLShader", "CreateSpriteShader", "CreateSolidShader", "InternalUpdate",
          "InternalRender"}},
        {"TextGL", {"SetGLShader", "CreateTextShader", "InternalUpdate", "InternalRender"}},
        {"TimelineGL", {"InternalRender", "Clone", "CloneDeep"}},
        {"FontGL", {"Initialize", "RenderGlyph"}},
        {"TextureGL", {"Compress", "CreateGLTexture", "GetGLTexture", "ReleaseGLTexture"}},
        {"ShaderGL",
         {"Create", "Compile", "CompileGLShader", "CreateGLShader", "GetGLShader", "Use", "ReleaseGLShader",
          "Load", "LookupLocations"}},
        {"ShaderSource", {"Trace", "Save"}},
        {"SpriteVertexShaderSource", {}},
        {"SolidVertexShaderSource", {}},
        {"TextVertexShaderSource", {}},
        {"SpriteFragmentShaderSource", {}},
        {"SolidFragmentShaderSource", {}},
        {"TextFragmentShaderSource", {}}};
    std::set<std::string> missing = plain;
    for (auto const& [name, members] : classes) {
        for (std::string const& member : members) {
            missing.insert(name + "::" + member);
        }
        missing.insert(
            {name + "::" + name, name + "::~" + name, "vtable for " + name, "typeinfo for " + name});
    }
    std::set<std::string> extra;
    for (auto const& [offset, symbol] : ElfFile(ZORVAN_PLUGIN_PATH).Exports()) {
        const std::string whole = Demangled(symbol.c_str());
        missing.erase(whole);
        missing.erase(Short(whole));
        missing.erase(WithoutArguments(Short(whole)));
        // "typeinfo name for zorvan::SpriteGL", "non-virtual thunk to zorvan::TimelineGL::~TimelineGL()".
        const size_t at = whole.find("zorvan::");
        const std::string owner =
            at == std::string::npos ? "" : whole.substr(at + 8, whole.find_first_of(":(<", at + 8) - at - 8);
        const std::string kind = at == std::string::npos ? "" : whole.substr(0, at);
        const std::set<std::string> kinds = {"", "vtable for ", "typeinfo for ", "typeinfo name for ",
                                             "non-virtual thunk to "};
        const bool allowed =
            plain.count(whole) == 1 || ((classes.count(owner) == 1 || owner == "ClassContainerT") &&
                                        (kinds.count(kind) == 1 || kind == "void "));
        if (!allowed) {
            extra.insert(whole);
        }
    }
    EXPECT_EQ(missing, std::set<std::string>()) << "missing exports";
    EXPECT_EQ(extra, std::set<std::string>()) << "exports beyond the interface";
}

}  // namespace
}  // namespace zorvan
