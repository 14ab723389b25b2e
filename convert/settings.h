#pragma once

// The settings files that steer image conversion: "<input>.settings" beside
// an input and "default.settings" in each directory above it, lines of the
// form "key: value".
#include "convert/parse_integer.h"
#include "convert/settings_chain.h"
#include "convert/settings_file.h"
#include "convert/settings_store.h"
