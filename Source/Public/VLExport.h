#pragma once

/// Exports a class or function from the shared library, which is built with hidden symbol visibility.
#define VORLANE_EXPORT __attribute__((visibility("default")))
