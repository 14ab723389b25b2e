#pragma once

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <vector>

#include "fbx/io/fbx_binary_builder_testing.h"

// Scene files for the reader's tests, benchmarks and fuzz seeds, built with
// FbxBinaryBuilder: the usual sections around what a case writes, and the
// shapes of input that an attacker would try.

// "Definitions" with one "ObjectType" per word.
void writeDefinitions(FbxBinaryBuilder& b, std::initializer_list<const char*> words);
// Begins an object record; the caller adds its block and ends it.
FbxBinaryBuilder& beginObject(FbxBinaryBuilder& b, const char* word, int64_t id, const char* name,
                              const char* subclass);
// An object record without a block.
void writeObject(FbxBinaryBuilder& b, const char* word, int64_t id, const char* name, const char* subclass);
// A "P" record of three doubles.
void writeProperty3(FbxBinaryBuilder& b, const char* name, const char* type, double x, double y, double z);
void writeConnection(FbxBinaryBuilder& b, const char* kind, int64_t source, int64_t destination);

using FbxSectionWriter = std::function<void(FbxBinaryBuilder&)>;
// A scene file: one document "FileScene" (id 1000, root node id 0), the
// definitions of `words`, and what `objects` and `connections` write inside
// "Objects" and "Connections".
std::vector<uint8_t> sceneFile(std::initializer_list<const char*> words, const FbxSectionWriter& objects,
                               const FbxSectionWriter& connections);

// Hostile shapes. Nodes are named Node0, Node1... and their ids start at
// kFirstNodeId, far from those of the documents (1000 and up).
inline constexpr int64_t kFirstNodeId = 1000000;
// `depth` nodes, each under the one before, the first under the root; the
// connections come top down.
std::vector<uint8_t> nodeChainFile(int depth);
// `layers` layers of two nodes, each connected under both nodes of the
// layer above: 2^layers paths from the root to the last layer.
std::vector<uint8_t> nodeDiamondsFile(int layers);
// Three nodes Node0 > Node1 > Node2 under the root, a second document, and
// connections that would close cycles: a node under its grandchild, a node
// under itself, the root under a node, two documents each other's source.
std::vector<uint8_t> cyclesFile();
// `count` nodes under the root that all use one material.
std::vector<uint8_t> sharedMaterialFile(int count);
// One node with `count` distinct "Properties70" records.
std::vector<uint8_t> manyPropertiesFile(int count);
// "Definitions" with `count` distinct type words.
std::vector<uint8_t> manyTypeWordsFile(int count);
// A field nested `depth` blocks deep.
std::vector<uint8_t> nestedBlocksFile(int depth);
