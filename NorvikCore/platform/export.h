// NorvikCore/platform/export.h - marks what the shared library offers; everything else is hidden.
#pragma once

#define NK_EXPORT __attribute__((visibility("default")))
