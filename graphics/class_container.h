// Factory records of the GL classes.
#pragma once

#include "core/class_registry.h"
#include "graphics/api.h"

namespace zorvan {

// Makes objects of the GL class T for the core base class whose identity the record holds. T's own source
// unit instantiates its record.
template <typename T>
class ZORVAN_GL_API ClassContainerT : public ClassContainer {
  public:
    using ClassContainer::ClassContainer;
    ~ClassContainerT() override;

    // A new T, owned by the caller.
    void* Create() override;
};

// Not in the class: inline members are not exported.
template <typename T>
ClassContainerT<T>::~ClassContainerT() = default;

template <typename T>
void* ClassContainerT<T>::Create() {
    return new T();
}

static_assert(sizeof(void*) != 4 || sizeof(ClassContainer) == 8, "virtual table and identity");

}  // namespace zorvan
