// The test executable's own tvkMalloc and tvkFree, which the library binds
// to instead of libtvkcore's: they allocate as libtvkcore does and keep a log.
#pragma once

#include <cstdint>
#include <vector>

namespace whttest {

struct AllocatorLog {
    std::vector<int32_t> sizes;        // one entry per tvkMalloc
    std::vector<void*> blocks;         // what tvkMalloc returned
    std::vector<void*> freed;          // one entry per tvkFree
    bool exhausted = false;            // when set, tvkMalloc returns null as if memory were exhausted
};

// Clears the log and returns it.
AllocatorLog& freshAllocatorLog();

}  // namespace whttest
