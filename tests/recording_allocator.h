// A test executable's own tvkMalloc and tvkFree, which the library binds to
// instead of libtvkcore's: they allocate as libtvkcore does (64-byte
// aligned) and keep a log.  tvkFree also notes the first 8 bytes of the
// block it is given, which for a DCT-IV block is the arena's cursor after
// the context's tear-down.
#pragma once

#include <cstdint>
#include <vector>

namespace tvktest {

struct AllocationLog {
    std::vector<int32_t> sizes;          // one entry per tvkMalloc
    std::vector<void*> blocks;           // what tvkMalloc returned
    std::vector<void*> freed;            // one entry per tvkFree
    std::vector<uint64_t> cursorAtFree;  // the first 8 bytes of each non-null freed block
    bool exhausted = false;              // tvkMalloc answers null while set, as if memory were exhausted
};

// Clears the log and returns it.
AllocationLog& freshAllocationLog();

}  // namespace tvktest
