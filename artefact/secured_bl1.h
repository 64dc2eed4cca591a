#pragma once

#include <cstddef>
#include <optional>
#include <variant>

#include "artefact/file_scan.h"
#include "artefact/public_key.h"
#include "artefact/public_key_file.h"
#include "sb10/records.h"
#include "sb20/records.h"
#include "util/build_info.h"

namespace sealwright {

/// A secured BL1 taken apart. The image is code, build information where there is some, context.
struct SecuredBl1 {
  Scheme scheme;
  std::variant<SB10_CONTEXT, SB20_CONTEXT> context;
  std::size_t code_size;
  std::optional<BuildInfo> build_info;
};

/// A secured BL1 of one scheme, recognised by the mark in its context. `end` is the
/// end of the image as FileSource gives it.
std::optional<SecuredBl1> find_secured_bl1(ByteView end, std::size_t image_size, Scheme scheme);

/// A secured BL1 of either scheme. The bytes of one scheme's mark can stand where the other covers
/// nothing; so where both marks stand, the scheme counts whose root key signed the image, and
/// scheme 2.1 where both or neither did.
std::optional<SecuredBl1> recognise_secured_bl1(const FileScan& image);

[[nodiscard]] RootInfo root_info_of(const SecuredBl1& bl1);
[[nodiscard]] PublicKey root_key_of(const SecuredBl1& bl1);
[[nodiscard]] PublicKey stage2_key_of(const SecuredBl1& bl1);

// The checks that a device makes of an image, each of them for itself. Lengths that a key states
// count where they do for the device, so that keys which are not regular get the device's verdict.

/// Whether the root key in the context signed code, build information and stage-2 key.
[[nodiscard]] bool verify_bl1_signature(const SecuredBl1& bl1, const FileScan& image);

/// Whether the stage-2 key in the context signed this secured BL2, as "-STAGE2_VERIFY" says when it
/// gets the context for a key file.
[[nodiscard]] bool verify_bl2_signature(const SecuredBl1& bl1, const FileScan& secured_bl2);

}  // namespace sealwright
