#pragma once

// The host script engine's external-object calling convention: a library announces its functions
// from ESInitialize, and the engine calls each one with tagged values.

#include <cstdint>

extern "C" {

// Type codes of a tagged value.
enum {
    kTypeUndefined = 0,
    kTypeBool = 2,
    kTypeDouble = 3,
    kTypeString = 4,
    kTypeInteger = 123,
    kTypeUInteger = 124,
    kTypeScript = 125, // a text the engine evaluates in the calling script's scope
};

// An 8-byte payload and its type code. Integers are read by the engine from the payload's first
// 32 bits; strings and scripts returned to the engine are handed back to ESFreeMem.
typedef struct {
    union {
        int32_t intval;
        double fltval;
        char* string;
    } data;
    int32_t type;
    int32_t filler;
} TaggedData;

} // extern "C"
