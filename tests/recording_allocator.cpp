#include "recording_allocator.h"

#include <cstdlib>
#include <cstring>

#include "tvkcore.h"

namespace tvktest {

namespace {
AllocationLog log;
}

AllocationLog& freshAllocationLog() {
    log = {};
    return log;
}

}  // namespace tvktest

extern "C" void* tvkMalloc(int32_t size) {
    void* block = nullptr;
    if (tvktest::log.exhausted || size < 0 || posix_memalign(&block, 64, size ? size : 1) != 0) block = nullptr;
    tvktest::log.sizes.push_back(size);
    tvktest::log.blocks.push_back(block);
    return block;
}

extern "C" void tvkFree(void* block) {
    tvktest::log.freed.push_back(block);
    if (block) {
        uint64_t cursor;
        std::memcpy(&cursor, block, sizeof cursor);
        tvktest::log.cursorAtFree.push_back(cursor);
    }
    std::free(block);
}
