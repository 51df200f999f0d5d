#pragma once

/// @file
/// What the shared library shows to programs; everything else in it is hidden.
#define FABSCOPE_API __attribute__((visibility("default")))
