#pragma once

/// What is done when the statics of the libraries that a program names before this one are gone; null for nothing.
extern "C" __attribute__((visibility("default"))) void (*doAtLast)();
