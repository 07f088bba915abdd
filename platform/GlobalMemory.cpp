#include "platform/GlobalMemory.h"

#include <cstdlib>

namespace mm {

namespace {

// The bookkeeping sits just in front of the data, and the handle is the
// data's address, so a block can be freed by its handle or its locked
// pointer alike.
struct Header {
    std::size_t size;
    std::uint32_t locks;
};

constexpr std::size_t kHeaderRoom = 2 * alignof(std::max_align_t);
static_assert(sizeof(Header) <= kHeaderRoom);

Header* headerOf(HGLOBAL handle)
{
    return reinterpret_cast<Header*>(static_cast<unsigned char*>(handle) - kHeaderRoom);
}

}  // namespace

HGLOBAL GlobalAlloc(std::uint32_t flags, std::size_t bytes)
{
    if (bytes > SIZE_MAX / 2) return nullptr;
    // One spare byte keeps a zero-sized block a distinct address.
    const std::size_t total = kHeaderRoom + bytes + 1;
    void* raw = (flags & GMEM_ZEROINIT) ? std::calloc(1, total) : std::malloc(total);
    if (raw == nullptr) return nullptr;
    auto* header = static_cast<Header*>(raw);
    header->size = bytes;
    header->locks = 0;
    return static_cast<unsigned char*>(raw) + kHeaderRoom;
}

void* GlobalLock(HGLOBAL handle)
{
    if (handle == nullptr) return nullptr;
    ++headerOf(handle)->locks;
    return handle;
}

bool GlobalUnlock(HGLOBAL handle)
{
    if (handle == nullptr) return false;
    Header* header = headerOf(handle);
    if (header->locks > 0) --header->locks;
    return header->locks > 0;
}

HGLOBAL GlobalFree(HGLOBAL handle)
{
    if (handle != nullptr) std::free(headerOf(handle));
    return nullptr;
}

std::size_t GlobalSize(HGLOBAL handle) { return handle == nullptr ? 0 : headerOf(handle)->size; }

}  // namespace mm
