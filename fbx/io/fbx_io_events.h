#pragma once

#include <functional>

class FbxDocument;
class FbxManager;

// An event of the import: its type name ("FbxEventPreImport",
// "FbxEventPostImport", "FbxEventReferencedDocument") and the document.
struct FbxIOEvent {
    const char* type;
    FbxDocument* document;
};

// Listeners of import events, per manager. A program need not listen; a
// listener stays until it is removed.
class FbxIOEvents {
public:
    using Listener = std::function<void(const FbxIOEvent&)>;

    // Gives a handle for Remove.
    static int Add(const FbxManager* manager, Listener listener);
    static void Remove(int handle);
    // Passes the event to the listeners of the manager, in the order they
    // were added.
    static void Emit(const FbxManager* manager, const char* type, FbxDocument* document);
};
