#include "fbx/io/fbx_io_events.h"

#include <vector>

namespace {

struct Entry {
    int handle;
    const FbxManager* manager;
    FbxIOEvents::Listener listener;
};

std::vector<Entry>& listeners() {
    static std::vector<Entry> all;
    return all;
}

}  // namespace

int FbxIOEvents::Add(const FbxManager* manager, Listener listener) {
    static int next = 0;
    listeners().push_back({++next, manager, std::move(listener)});
    return next;
}

void FbxIOEvents::Remove(int handle) {
    auto& all = listeners();
    for (auto it = all.begin(); it != all.end(); ++it)
        if (it->handle == handle) {
            all.erase(it);
            return;
        }
}

void FbxIOEvents::Emit(const FbxManager* manager, const char* type, FbxDocument* document) {
    FbxIOEvent event{type, document};
    // A copy: a listener may add or remove listeners.
    std::vector<Entry> current = listeners();
    for (const Entry& entry : current)
        if (entry.manager == manager) entry.listener(event);
}
