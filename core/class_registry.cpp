#include "core/class_registry.h"

namespace zorvan {

ClassContainer::~ClassContainer() = default;

void* ClassContainer::Create() {
    return nullptr;
}

ClassRegistry::~ClassRegistry() {
    for (ClassContainer* record : records_) {
        delete record;
    }
}

bool ClassRegistry::RegisterClass(ClassContainer* record) {
    if (record == nullptr || !records_.Append(record)) {
        delete record;
        return false;
    }
    return true;
}

void* ClassRegistry::Create(ClassId id) const {
    for (uint32_t i = records_.Count(); i-- > 0;) {
        if (records_[i]->classId == id) {
            return records_[i]->Create();
        }
    }
    return nullptr;
}

}  // namespace zorvan
