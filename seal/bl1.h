#pragma once

#include <optional>

#include "seal/boot_image.h"
#include "seal/options.h"
#include "seal/pending.h"
#include "seal/root_set.h"
#include "seal/signer.h"
#include "util/large_buffer.h"

// The steps of "bl1": assemble, sign, finish.

namespace sealwright {

/// A BL1 on its way.
struct Bl1 {
  Stage2File stage2;
  RootSet root;
  InputFile code;
  std::optional<LargeBuffer> image;  // what is sealed, and room for the context
  std::size_t sealed_length = 0;     // code and build information
  BootContext context;
  TakenUp taken_up;       // where it waited for its signature
  SigningTask task = {};  // for the root key

  [[nodiscard]] WritableBytes sealed() { return {image->data(), sealed_length}; }
  [[nodiscard]] ByteView whole() const {
    return {image->data(), sealed_length + view_of_context(context).size()};
  }
};

/// Reads and checks everything and makes the image but for its signature.
[[nodiscard]] Objection assemble_bl1(Bl1& bl1, const Options& options, PrivateHalf private_half);

/// Puts the signature in, proves that a device boots the image, and publishes it.
[[nodiscard]] Objection finish_bl1(Result& result, Bl1& bl1, const Signature& signature,
                                   const Options& options);

}  // namespace sealwright
