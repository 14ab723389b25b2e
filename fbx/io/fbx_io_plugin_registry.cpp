#include "fbx/io/fbx_io_plugin_registry.h"

#include <strings.h>

#include <cstring>
#include <map>
#include <memory>

#include "fbx/io/fbx_reader_fbx7.h"

int FbxIOPluginRegistry::RegisterReader(FbxReaderCreateFunc create, FbxIOInfoFunc info, bool override,
                                        bool userPlugin) {
    if (!create || !info) return -1;
    auto** extensions = static_cast<const char**>(info(kExtensionsRequest, 0));
    auto** descriptions = static_cast<const char**>(info(kDescriptionsRequest, 0));
    if (!extensions) return -1;
    int first = -1;
    for (int i = 0; extensions[i]; ++i) {
        FbxIOPluginEntry entry;
        entry.extension = extensions[i];
        entry.description = descriptions && descriptions[i] ? descriptions[i] : "";
        entry.create = create;
        entry.info = info;
        entry.subId = i;
        auto* fbxFlag = static_cast<const bool*>(info(kFbxFlagRequest, i));
        entry.isFbx = fbxFlag && *fbxFlag;
        entry.fromUserPlugin = userPlugin;
        int index = -1;
        if (override)
            for (size_t j = 0; j < readers_.size(); ++j)
                if (strcasecmp(readers_[j].extension.c_str(), entry.extension.c_str()) == 0) {
                    index = static_cast<int>(j);
                    break;
                }
        if (index >= 0) {
            readers_[index] = entry;
        } else {
            index = static_cast<int>(readers_.size());
            readers_.push_back(entry);
        }
        if (first < 0) first = index;
    }
    return first;
}

const FbxIOPluginEntry* FbxIOPluginRegistry::GetReaderEntry(int index) const {
    if (index < 0 || index >= GetReaderFormatCount()) return nullptr;
    return &readers_[index];
}

int FbxIOPluginRegistry::GetNativeReaderFormat() const {
    for (size_t i = 0; i < readers_.size(); ++i)
        if (readers_[i].isFbx) return static_cast<int>(i);
    return -1;
}

bool FbxIOPluginRegistry::IsFbxReaderFormat(int index) const {
    const FbxIOPluginEntry* entry = GetReaderEntry(index);
    return entry && entry->isFbx;
}

int FbxIOPluginRegistry::FindReaderFormat(const char* fileName) const {
    const char* dot = fileName ? std::strrchr(fileName, '.') : nullptr;
    if (dot)
        for (size_t i = 0; i < readers_.size(); ++i)
            if (strcasecmp(readers_[i].extension.c_str(), dot + 1) == 0) return static_cast<int>(i);
    return GetNativeReaderFormat();
}

FbxReader* FbxIOPluginRegistry::CreateReader(int index, FbxManager& manager, FbxImporter& importer) const {
    const FbxIOPluginEntry* entry = GetReaderEntry(index);
    if (!entry || !entry->create) return nullptr;
    return entry->create(manager, importer, entry->subId, index);
}

FbxIOPluginRegistry& FbxIOPluginRegistry::Of(const FbxManager* manager) {
    // Lookup by manager only, never iterated: ordering by address is fine.
    static std::map<const FbxManager*, std::unique_ptr<FbxIOPluginRegistry>> registries;
    std::unique_ptr<FbxIOPluginRegistry>& registry = registries[manager];
    if (!registry) {
        registry = std::make_unique<FbxIOPluginRegistry>();
        registry->RegisterReader(&FbxReaderFbx7::CreateForImporter, &FbxReaderFbx7::PluginInfo, false, false);
    }
    return *registry;
}
