// The rollback journal: pages as they were before they were changed, in a file beside the
// database's. It is this project's own, no part of Jet 4.0.
//
//   offset  size  meaning
//   0       8     "VORELLEJ"
//   8       4     version, 2
//   12      4     pages that the file had
//   16      8     salt of the checksums, new for every journal
//   24      8     fingerprint of the file
//   32      4     records that are durable and may have to be put back; 0: none
//   36      4     0
//   40      8     checksum of the above
//   48      ..    records
//
// A record:
//
//   offset  size  meaning
//   0       4     page
//   4       4     1 = as it was before the transaction, 2 = before the statement
//   8       8     checksum of the above and the page
//   16      4096  the page
#pragma once

#include "engine/jet/format/field.h"
#include "engine/jet/format/types.h"

namespace jet::format::journal {

inline constexpr Field<std::uint64_t> kMagic{0};
inline constexpr Field<std::uint32_t> kVersion{8};
inline constexpr Field<std::uint32_t> kPageCount{12};
inline constexpr Field<std::uint64_t> kSalt{16};
inline constexpr Field<std::uint64_t> kFingerprint{24};
inline constexpr Field<std::uint32_t> kRecordCount{32};
inline constexpr Field<std::uint64_t> kChecksum{40};
inline constexpr std::size_t kHeadSize = 48;

inline constexpr std::uint64_t kMagicValue = 0x4A454C4C45524F56;  ///< "VORELLEJ"
inline constexpr std::uint32_t kVersionValue = 2;

// ---- A record ----

inline constexpr Field<std::uint64_t> kRecordHead{0};  ///< page and kind
inline constexpr Field<std::uint64_t> kRecordChecksum{8};
inline constexpr std::size_t kRecordPage = 16;
inline constexpr std::size_t kRecordSize = kRecordPage + kPageSize;

}  // namespace jet::format::journal
