// Factory records of the GL classes.
#pragma once

#include "core/class_registry.h"
#include "graphics/api.h"

namespace zorvan {

// Makes objects of the GL class T for the core base class whose identity the record holds.
template <typename T>
class ZORVAN_GL_API ClassContainerT : public ClassContainer {
  public:
    using ClassContainer::ClassContainer;

    // A new T, owned by the caller.
    void* Create() override;
};

template <typename T>
void* ClassContainerT<T>::Create() {
    return new T();
}

class ZORVAN_GL_API TimelineGL;
class ZORVAN_GL_API CameraGL;
class ZORVAN_GL_API SpriteGL;
class ZORVAN_GL_API TextureGL;
class ZORVAN_GL_API TextGL;
class ZORVAN_GL_API FontGL;
class ZORVAN_GL_API ShaderGL;

// Each class's own source unit holds its record, so that nobody else needs the whole class.
extern template class ClassContainerT<TimelineGL>;
extern template class ClassContainerT<CameraGL>;
extern template class ClassContainerT<SpriteGL>;
extern template class ClassContainerT<TextureGL>;
extern template class ClassContainerT<TextGL>;
extern template class ClassContainerT<FontGL>;
extern template class ClassContainerT<ShaderGL>;

}  // namespace zorvan
