#pragma once

/// Marks what the libraries export; everything else is hidden.
#define XEL_EXPORT __attribute__((visibility("default")))
