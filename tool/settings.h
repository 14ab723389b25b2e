#pragma once

// The settings files that steer image conversion: "<input>.settings" beside
// an input and "default.settings" in each directory above it, lines of the
// form "key: value".
#include "tool/parse_integer.h"
#include "tool/settings_chain.h"
#include "tool/settings_file.h"
#include "tool/settings_store.h"
