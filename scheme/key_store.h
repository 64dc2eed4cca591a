#pragma once

#include <cstdint>

#include "base/bytes.h"
#include "crypto/status.h"

// Key material of a run that both schemes use: process-wide buffers, cleared before each load. A
// loader returns a view of what it loaded, and callers pass the view on. A file that cannot be
// opened ends the process as fail_file_open does.

inline constexpr std::uint32_t private_key_capacity = 2048;  // bytes
inline constexpr std::uint32_t public_key_capacity = 1024;   // bytes

extern std::uint8_t privateKey[private_key_capacity];  // key item list
extern std::uint32_t privateKeyLen;
extern std::uint8_t publicKey[public_key_capacity];
extern std::uint32_t publicKeyLen;

/// Which length counts as that of the eFuse data in a file.
enum class EfuseLength {
  of_file,   // the file's: signing refuses a file that is shorter or longer than the fuses
  of_fuses,  // the fuses': -VERIFY reads that many bytes, and zeros after a shorter file
};

/// eFuse data in its buffer, which is as long as the scheme's fuses. `length` may be another: who
/// uses the data compares it first.
struct EfuseData {
  const std::uint8_t* bytes;
  std::uint32_t length;
};

namespace sealwright {

/// Reads an eFuse file into the cleared `fuses`, as far as it fits.
[[nodiscard]] EfuseData load_efuse_data(WritableBytes fuses, const char* path, EfuseLength rule);

/// Reads a private-key file into `privateKey`, decrypts it and leaves out the `tail` bytes that
/// made it whole blocks. `items` becomes the key item list. A file above 2048 bytes aborts.
/// @return what do_PrivateKey_Decrypt returns; after a failure the list is noise, and
///         `privateKeyLen` stays the file's length.
[[nodiscard]] Status load_private_key_file(ByteView& items, const char* path, std::int32_t mode,
                                           std::uint32_t tail);

/// Reads a public-key file whole into `publicKey`; one above 1024 bytes aborts.
/// @return the whole buffer: zero after the file's bytes.
[[nodiscard]] WritableBytes load_public_key_file(const char* path);

/// Clears the buffers of this unit.
void wipe_key_store();

}  // namespace sealwright
