#include "model/memory_map.h"

#include "model/root_archive.h"

VMMemoryMap *VMMemoryMap::m_activeMemoryMap = nullptr;

VMMemoryMap::VMMemoryMap() : globalVariables(std::make_unique<VMVariableManager>(nullptr)) {}

VMMemoryMap::~VMMemoryMap()
{
    if (m_activeMemoryMap == this)
        m_activeMemoryMap = nullptr;
    globalVariables.reset();
    // The roots come in from the host as plain pointers: this is the one place that frees them.
    const std::unique_ptr<VMRootArchive> chip(chipRootArchive);
    const std::unique_ptr<VMRootArchive> soft(softRootArchive);
}
