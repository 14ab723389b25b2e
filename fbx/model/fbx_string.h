#pragma once

#include <string>

// The document model's owned, NUL-terminated byte string.
using FbxString = std::string;
