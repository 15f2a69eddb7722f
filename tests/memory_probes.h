// Two ways to see how far past the end of its source a call reads.
// - GuardedPage and runsWithoutFault: memory that ends at an inaccessible
//   page, so that a read past it is a SIGSEGV, turned into an answer instead
//   of a crash.  Exact to the byte, but a 16-byte aligned access can't be
//   placed across the page boundary.
// - ReadWatch: hardware watchpoints (perf_event_open breakpoints) on 8-byte
//   slots behind the source, which count every access, aligned or not.
//   Exact to 8 bytes; not every system allows them.
#pragma once

#include <linux/hw_breakpoint.h>
#include <linux/perf_event.h>
#include <setjmp.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstdint>

namespace tvktest {

// At least `bytes` of read-write memory (one page by default) that end
// where an inaccessible page begins.
class GuardedPage {
   public:
    explicit GuardedPage(size_t bytes = 1) {
        const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
        usable_ = (bytes + page - 1) / page * page;
        mapped_ = usable_ + page;
        void* p = mmap(nullptr, mapped_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        base_ = p == MAP_FAILED ? nullptr : static_cast<unsigned char*>(p);
        if (base_ && mprotect(base_ + usable_, page, PROT_NONE) != 0) base_ = nullptr;
    }
    ~GuardedPage() {
        if (base_) munmap(base_, mapped_);
    }
    GuardedPage(const GuardedPage&) = delete;
    GuardedPage& operator=(const GuardedPage&) = delete;
    bool ok() const { return base_ != nullptr; }
    unsigned char* guard() const { return base_ + usable_; }

   private:
    size_t usable_ = 0, mapped_ = 0;
    unsigned char* base_ = nullptr;
};

namespace detail {
inline sigjmp_buf& faultJump() {
    static sigjmp_buf jump;
    return jump;
}
inline void onFault(int) { siglongjmp(faultJump(), 1); }
}  // namespace detail

// Runs call() and tells whether it finished without touching the guard page.
// The call must be one that can be abandoned midway (a Codelet is: it holds
// no lock and allocates nothing, or only what a null buffer makes it take).
template <class F>
bool runsWithoutFault(F&& call) {
    struct sigaction fault = {}, oldSegv = {}, oldBus = {};
    fault.sa_handler = detail::onFault;
    sigemptyset(&fault.sa_mask);
    sigaction(SIGSEGV, &fault, &oldSegv);
    sigaction(SIGBUS, &fault, &oldBus);
    volatile bool finished = false;
    if (sigsetjmp(detail::faultJump(), 1) == 0) {
        call();
        finished = true;
    }
    sigaction(SIGSEGV, &oldSegv, nullptr);
    sigaction(SIGBUS, &oldBus, nullptr);
    return finished;
}

// Up to four 8-byte slots, each watched by a debug register of this thread,
// counting the reads and writes that touch it.
class ReadWatch {
   public:
    static constexpr int kSlots = 4;

    // Watches [at + 8 i, at + 8 i + 8) for i = 0 .. kSlots-1; `at` must be a
    // multiple of 8.
    explicit ReadWatch(const void* at) {
        for (int i = 0; i < kSlots; ++i) {
            perf_event_attr attr = {};
            attr.type = PERF_TYPE_BREAKPOINT;
            attr.size = sizeof attr;
            attr.bp_type = HW_BREAKPOINT_RW;  // x86 has no read-only watchpoint
            attr.bp_addr = reinterpret_cast<uintptr_t>(at) + 8 * i;
            attr.bp_len = HW_BREAKPOINT_LEN_8;
            attr.disabled = 1;
            attr.exclude_kernel = 1;
            attr.exclude_hv = 1;
            fd_[i] = static_cast<int>(syscall(SYS_perf_event_open, &attr, 0, -1, -1, 0));
        }
    }
    ~ReadWatch() {
        for (int fd : fd_)
            if (fd >= 0) close(fd);
    }
    ReadWatch(const ReadWatch&) = delete;
    ReadWatch& operator=(const ReadWatch&) = delete;

    bool ok() const {
        for (int fd : fd_)
            if (fd < 0) return false;
        return true;
    }

    // Whether this system lets a process watch its own memory.
    static bool available() {
        alignas(8) static const unsigned char probe[8 * kSlots] = {};
        return ReadWatch(probe).ok();
    }

    // Runs call() with the watchpoints armed; returns the accesses per slot.
    template <class F>
    std::array<long long, kSlots> count(F&& call) {
        std::array<long long, kSlots> hits = {};
        for (int fd : fd_) ioctl(fd, PERF_EVENT_IOC_RESET, 0);
        for (int fd : fd_) ioctl(fd, PERF_EVENT_IOC_ENABLE, 0);
        call();
        for (int fd : fd_) ioctl(fd, PERF_EVENT_IOC_DISABLE, 0);
        for (int i = 0; i < kSlots; ++i)
            if (read(fd_[i], &hits[i], sizeof hits[i]) != sizeof hits[i]) hits[i] = -1;
        return hits;
    }

   private:
    std::array<int, kSlots> fd_ = {-1, -1, -1, -1};
};

}  // namespace tvktest
