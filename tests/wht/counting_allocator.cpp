#include "counting_allocator.h"

#include <cstdlib>

#include "tvkcore.h"

namespace whttest {

namespace {
AllocatorLog log;
}

AllocatorLog& freshAllocatorLog() {
    log = {};
    return log;
}

}  // namespace whttest

extern "C" void* tvkMalloc(int32_t size) {
    void* block = nullptr;
    if (whttest::log.exhausted || size < 0 || posix_memalign(&block, 64, size ? size : 1) != 0) block = nullptr;
    whttest::log.sizes.push_back(size);
    whttest::log.blocks.push_back(block);
    return block;
}

extern "C" void tvkFree(void* block) {
    whttest::log.freed.push_back(block);
    std::free(block);
}
