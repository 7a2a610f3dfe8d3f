#pragma once

/// Marks what the library exports. It is built with hidden symbol visibility, so everything else stays inside.
#define VORLANE_EXPORT __attribute__((visibility("default")))
