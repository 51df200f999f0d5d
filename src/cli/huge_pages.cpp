// The model of a large fabric stands in a few large arrays. The system hands memory out page by
// page, when each is first touched, and with pages of 4 KiB that is a third of a check's time. So
// large blocks ask for huge pages, of 2 MiB. Small ones do not: a small fabric would take twice the
// memory.
//
// All of the command's memory comes from here. Builds with the address sanitizer, which looks after
// memory itself, leave this out.

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <malloc.h>
#include <new>
#include <sys/mman.h>

namespace {

constexpr std::size_t hugePage = std::size_t{1} << 21U;
// A block of that size is one of a large fabric; from then on smaller ones get whole pages, too.
constexpr std::size_t largeBlock = 4 * hugePage;
constexpr std::size_t mediumBlock = hugePage;
// The few blocks of that size go back to the system as soon as they are freed. Inside the heap they
// would leave holes, which the next one may just not fit into.
constexpr int ownMappingFrom = 2 * hugePage;

std::atomic<bool> isLargeFabric = false;

void* AllocateInHugePages(std::size_t size) {
  void* block = nullptr;
  if (posix_memalign(&block, hugePage, size) != 0) return nullptr;
  // What does not fill a page stays in small ones. A system without huge pages does as well.
  (void)madvise(block, size / hugePage * hugePage, MADV_HUGEPAGE);
  return block;
}

void* Allocate(std::size_t size) {
  if (size >= largeBlock && !isLargeFabric.exchange(true)) {
    (void)mallopt(M_MMAP_THRESHOLD, ownMappingFrom);
  }
  const bool isHuge = size >= mediumBlock && isLargeFabric;
  return isHuge ? AllocateInHugePages(size) : std::malloc(size != 0 ? size : 1);
}

}  // namespace

void* operator new(std::size_t size) {
  for (;;) {
    void* block = Allocate(size);
    if (block != nullptr) return block;
    const std::new_handler handler = std::get_new_handler();
    if (handler == nullptr) throw std::bad_alloc();
    handler();
  }
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t /*size*/) noexcept { std::free(block); }
