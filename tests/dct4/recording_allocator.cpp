#include "recording_allocator.h"

#include <cstdlib>
#include <cstring>

#include "tvkcore.h"

namespace dct4test {

namespace {
AllocationLog log;
}

AllocationLog& freshAllocationLog() {
    log = {};
    return log;
}

}  // namespace dct4test

extern "C" void* tvkMalloc(int32_t size) {
    void* block = nullptr;
    if (dct4test::log.exhausted || size < 0 || posix_memalign(&block, 64, size ? size : 1) != 0) block = nullptr;
    dct4test::log.sizes.push_back(size);
    dct4test::log.blocks.push_back(block);
    return block;
}

extern "C" void tvkFree(void* block) {
    dct4test::log.freed.push_back(block);
    if (block) {
        uint64_t cursor;
        std::memcpy(&cursor, block, sizeof cursor);
        dct4test::log.cursorAtFree.push_back(cursor);
    }
    std::free(block);
}
