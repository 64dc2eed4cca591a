#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "artefact/recognised_file.h"

// What files named together say about each other. Only regular keys relate: of others it cannot be
// said which key they are. Copies of one key, two BL1 images, eFuse data and private keys tell
// nothing of each other.

namespace sealwright {

/// Files in the order named. Of files with the same contents one is kept.
struct FileSet {
  std::vector<RecognisedFile> contents;
  std::vector<std::size_t> content_of;  // of each file, where it is in `contents`
};

/// What the other file of a relation is to this one.
enum class Role : std::uint8_t {
  root_key,      // a file of the root key, an image that carries it, or the other way round
  stage2_key,    // the same for the stage-2 key
  fuses,         // eFuse data that holds the root key here
  public_half,   // of the private key here
  private_half,  // of a key here
  signer,        // a file of the key that signed the BL2 here
  signed_image   // a BL2 that the key here signed
};

struct Relation {
  std::size_t other;  // its place among the files named
  Role as;
};

/// What the other files named say about one.
struct Standing {
  std::vector<Relation> goes_with;  // in the order named
  /// It belongs to none of the files named that it could belong to, though there are some: eFuse
  /// data to BL1 images and files of possible root keys, a private key to public keys and BL1
  /// images, a public key to BL1 images, each of its scheme.
  bool is_stray = false;
};

/// Adds a file.
void add_file(FileSet& files, FileScan scan);

/// Recognises each BL2 that a key named has signed, and relates the files. @return one for each
/// file. Each distinct key is tried once on each content that may be signed by it, and on each
/// eFuse data.
[[nodiscard]] std::vector<Standing> relate(FileSet& files);

}  // namespace sealwright
