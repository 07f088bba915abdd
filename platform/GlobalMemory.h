#pragma once
// Global memory blocks as the engine's buffers are described: allocated
// (optionally zero-filled), locked to get their address, freed. A block
// never moves: its handle is its address, so a locked pointer handed to a
// wave device stays valid until the block is freed, and freeing by the
// locked pointer frees the block.
#include <cstddef>
#include <cstdint>

namespace mm {

using HGLOBAL = void*;

inline constexpr std::uint32_t GMEM_FIXED = 0x0000;
inline constexpr std::uint32_t GMEM_MOVEABLE = 0x0002;
inline constexpr std::uint32_t GMEM_ZEROINIT = 0x0040;
inline constexpr std::uint32_t GHND = GMEM_MOVEABLE | GMEM_ZEROINIT;
inline constexpr std::uint32_t GPTR = GMEM_FIXED | GMEM_ZEROINIT;

// A new block of `bytes` bytes (zero-filled with GMEM_ZEROINIT); nullptr when
// there is not enough memory.
HGLOBAL GlobalAlloc(std::uint32_t flags, std::size_t bytes);
// The block's address; nullptr for a null handle.
void* GlobalLock(HGLOBAL block);
// Undoes one GlobalLock; true while locks remain.
bool GlobalUnlock(HGLOBAL block);
// Frees the block; returns nullptr on success (the handle otherwise).
HGLOBAL GlobalFree(HGLOBAL block);
// The block's size in bytes (0 for a null handle).
std::size_t GlobalSize(HGLOBAL block);

}  // namespace mm
