// Factories of scene classes, looked up by the identity of the core class that they implement.
#pragma once

#include "core/api.h"
#include "core/class_id.h"
#include "core/list.h"

namespace zorvan {

// Factory record of one class.
class ZORVAN_CORE_API ClassContainer {
  public:
    explicit ClassContainer(ClassId id = 0) : classId(id) {}
    virtual ~ClassContainer();

    // A new object as an untyped pointer to its first base, owned by the caller; null in this base.
    virtual void* Create();

    ClassId classId;  // of the core base class, e.g. "Sprite"
};

class ZORVAN_CORE_API ClassRegistry {
  public:
    ClassRegistry() = default;
    ClassRegistry(ClassRegistry const&) = delete;
    ClassRegistry& operator=(ClassRegistry const&) = delete;
    // Deletes the records: run it before the library that made them is unloaded.
    virtual ~ClassRegistry();

    // Takes ownership of the record. A later record of the same class wins. False when out of memory
    // (the record is deleted then) or for null.
    virtual bool RegisterClass(ClassContainer* record);

    // A new object of the class, or null when nobody registered it.
    void* Create(ClassId id) const;

  private:
    List<ClassContainer*> records_;
};

}  // namespace zorvan
