#include "fbx/io/fbx7_parent_links.h"

#include <vector>

#include "fbx/model/fbx_document.h"
#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_node.h"

const FbxObject* Fbx7ParentLinks::ParentOf(const FbxObject* object) {
    if (const FbxNode* node = FbxCast<FbxNode>(object)) return node->GetParent();
    if (object && object->Is<FbxDocument>()) return object->GetOwnerDocument();
    return nullptr;
}

Fbx7ParentLinks::Verdict Fbx7ParentLinks::Check(const FbxObject* child, const FbxObject* parent) {
    bool nodes = FbxCast<FbxNode>(child) && FbxCast<FbxNode>(parent);
    bool documents = child && parent && child->Is<FbxDocument>() && parent->Is<FbxDocument>();
    if (!nodes && !documents) return Verdict::eNotATreeLink;
    if (child == parent) return Verdict::eCycle;
    if (ParentOf(child)) return Verdict::eSecondParent;
    // `child` is the top of its own tree: the link closes a cycle exactly
    // when `parent` hangs below it.
    return Top(parent) == child ? Verdict::eCycle : Verdict::eLink;
}

const FbxObject* Fbx7ParentLinks::Top(const FbxObject* object) {
    std::vector<const FbxObject*> path;
    const FbxObject* at = object;
    // Trees made outside this read are finite as long as nobody made a
    // cycle by hand; the walk gives up after as many steps as there are
    // objects.
    FbxManager* manager = object->GetFbxManager();
    size_t limit = manager ? static_cast<size_t>(manager->GetObjectCount() + manager->GetDocumentCount()) + 1 : 1;
    while (path.size() <= limit) {
        auto shortcut = shortcuts_.find(at);
        const FbxObject* up = shortcut != shortcuts_.end() ? shortcut->second : ParentOf(at);
        if (!up) break;
        path.push_back(at);
        at = up;
    }
    for (const FbxObject* visited : path) shortcuts_[visited] = at;
    return at;
}
