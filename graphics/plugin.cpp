#include "graphics/plugin.h"

#include "graphics/class_container.h"
#include "graphics/device.h"

namespace zorvan {

class ZORVAN_GL_API TimelineGL;
class ZORVAN_GL_API CameraGL;
class ZORVAN_GL_API SpriteGL;
class ZORVAN_GL_API TextureGL;
class ZORVAN_GL_API TextGL;
class ZORVAN_GL_API FontGL;
class ZORVAN_GL_API ShaderGL;

// Instantiated in the classes' own source units: nothing here needs the whole classes.
extern template class ClassContainerT<TimelineGL>;
extern template class ClassContainerT<CameraGL>;
extern template class ClassContainerT<SpriteGL>;
extern template class ClassContainerT<TextureGL>;
extern template class ClassContainerT<TextGL>;
extern template class ClassContainerT<FontGL>;
extern template class ClassContainerT<ShaderGL>;

}  // namespace zorvan

namespace {

template <typename T>
void Register(zorvan::ClassRegistry& registry, char16_t const* baseName) {
    registry.RegisterClass(new zorvan::ClassContainerT<T>(zorvan::MakeClassId(baseName)));
}

}  // namespace

uint32_t Initialize(zorvan::ClassRegistry* registry) {
    Register<zorvan::TimelineGL>(*registry, u"Timeline");
    Register<zorvan::CameraGL>(*registry, u"Camera");
    Register<zorvan::SpriteGL>(*registry, u"Sprite");
    Register<zorvan::TextureGL>(*registry, u"Texture");
    Register<zorvan::TextGL>(*registry, u"Text");
    Register<zorvan::FontGL>(*registry, u"Font");
    Register<zorvan::ShaderGL>(*registry, u"Shader");
    return 1;
}

void* CreateDevice() {
    return new zorvan::GraphicsDeviceGL;
}

void Shutdown() {}
