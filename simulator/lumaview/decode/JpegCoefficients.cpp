// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/decode/JpegCoefficients.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <utility>

#include "simulator/lumaview/decode/PagesAhead.h"

namespace sim::lumaview {
namespace {

/// A mapping of whole pages, unmapped with the object.
class Mapping {
 public:
  Mapping() = default;
  ~Mapping() { Reset(); }
  Mapping(const Mapping&) = delete;
  Mapping& operator=(const Mapping&) = delete;

  /// `file` -1: fresh zeroed memory. `offset` need not be a page's.
  bool Map(int file, uint64_t offset, uint64_t bytes) {
    Reset();
    const auto page = static_cast<uint64_t>(sysconf(_SC_PAGESIZE));
    const uint64_t inside = offset % page;
    if (bytes + inside > PTRDIFF_MAX) {
      return false;  // more than 32 bits can address
    }
    const auto mapped = static_cast<size_t>(bytes + inside);
    const int flags = file >= 0 ? MAP_SHARED : MAP_PRIVATE | MAP_ANONYMOUS;
    void* start = mmap(nullptr, mapped, PROT_READ | PROT_WRITE, flags, file, static_cast<off_t>(offset - inside));
    if (start == MAP_FAILED) {
      return false;
    }
    if (file < 0) {
      madvise(start, mapped, MADV_HUGEPAGE);  // all of it will be written: fewer faults
      m_pages.emplace().Start({static_cast<std::byte*>(start), mapped}, PagesAhead::From::kEnd);
    }
    m_start = static_cast<std::byte*>(start);
    m_bytes = mapped;
    m_inside = static_cast<size_t>(inside);
    return true;
  }

  std::byte* Get() const { return m_start + m_inside; }

 private:
  void Reset() {
    m_pages.reset();
    if (m_start != nullptr) {
      munmap(m_start, m_bytes);
      m_start = nullptr;
    }
  }

  std::byte* m_start = nullptr;
  size_t m_bytes = 0;
  size_t m_inside = 0;  ///< from the page's begin to the first wanted byte
  std::optional<PagesAhead> m_pages;
};

}  // namespace

struct JpegCoefficients::Array {
  uint64_t RowBytes() const { return uint64_t{blocks} * sizeof(JBLOCK); }
  uint64_t Bytes() const { return RowBytes() * rows; }
  void ListRows() {
    std::byte* row = mapping.Get();
    for (JDIMENSION i = 0; i < rows; ++i, row += RowBytes()) {
      pointers.push_back(reinterpret_cast<JBLOCKROW>(row));
    }
  }
  JDIMENSION blocks = 0;  ///< in a row
  JDIMENSION rows = 0;
  uint64_t offset = 0;  ///< in the file
  Mapping mapping;
  std::vector<JBLOCKROW> pointers;  ///< to all rows
};

JpegCoefficients::JpegCoefficients() = default;
JpegCoefficients::~JpegCoefficients() = default;

jvirt_barray_ptr JpegCoefficients::Request(JDIMENSION blocks, JDIMENSION rows) {
  auto array = std::make_unique<Array>();
  array->blocks = blocks;
  array->rows = rows;
  m_arrays.push_back(std::move(array));
  // For libjpeg the type is a name without a body: it only hands the pointer back.
  return reinterpret_cast<jvirt_barray_ptr>(m_arrays.back().get());
}

size_t JpegCoefficients::IndexOf(jvirt_barray_ptr handle) const {
  const auto found = std::find_if(m_arrays.begin(), m_arrays.end(), [handle](const auto& array) {
    return array.get() == reinterpret_cast<Array*>(handle);
  });
  return static_cast<size_t>(found - m_arrays.begin());
}

Status JpegCoefficients::Realize(const Source& source) {
  uint64_t bytes = 0;
  for (const auto& array : m_arrays) {
    array->offset = bytes;
    bytes += array->Bytes();
  }
  if (bytes > source.GetLimits().coefficient_bytes) {
    auto file = source.OpenScratch(bytes);
    if (!file) {
      return Error{file.error().code, "JPEG: the coefficients: " + file.error().reason};
    }
    m_file = std::move(*file);
  }
  for (const auto& array : m_arrays) {
    if (!array->mapping.Map(m_file.Get(), array->offset, array->Bytes())) {
      return Error{kOutOfMemory, "JPEG: no memory for the coefficients"};
    }
    array->ListRows();
  }
  return Ok();
}

JBLOCKARRAY JpegCoefficients::Access(jvirt_barray_ptr handle, JDIMENSION first, JDIMENSION count) {
  Array& array = *reinterpret_cast<Array*>(handle);
  return first <= array.rows && count <= array.rows - first ? array.pointers.data() + first : nullptr;
}

}  // namespace sim::lumaview
