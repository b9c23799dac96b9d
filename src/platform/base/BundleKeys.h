#pragma once

/** The keys of bundles that programs share. */
namespace Platform::BundleKeys
{

#define BUNDLE_KEY(name, text, type, meaning) inline constexpr const char* name = text;
#define COMMAND_LINE(type, meaning)
#include "platform/base/BundleKeys.def"
#undef BUNDLE_KEY
#undef COMMAND_LINE

} // namespace Platform::BundleKeys
