#pragma once

#include <variant>

#include "artefact/file_scan.h"
#include "artefact/private_key_file.h"
#include "artefact/public_key_file.h"
#include "artefact/secured_bl1.h"

namespace sealwright {

/// eFuse data of a scheme; the data itself is the end of the scan.
struct EfuseFile {
  Scheme scheme;
};

/// A secured BL1 with its keys. `signed_by_root`: the root key inside signed it.
struct Bl1File {
  SecuredBl1 bl1;
  PublicKey root_key;
  PublicKey stage2_key;
  bool signed_by_root;
};

/// A secured BL2, which nothing but the key that signed it makes known.
struct Bl2File {
  PublicKey signer;
};

/// Nothing that can be told from the file alone.
struct UnknownFile {};

using FileContent =
    std::variant<UnknownFile, EfuseFile, PublicKeyFile, PrivateKeyFile, Bl1File, Bl2File>;

struct RecognisedFile {
  FileScan scan;
  FileContent content;
};

/// Says what a file is, except that a secured BL2 is unknown: files named with it may tell.
[[nodiscard]] RecognisedFile recognise_file(FileScan scan);

/// Whether a file may be a secured BL2: it is no BL1, and no key file that opens. Most public-key
/// files are recognised by their length alone, so one that proves nothing may be anything.
[[nodiscard]] bool may_be_bl2(const FileContent& content);

/// Whether the file is a BL2 that the key signed.
[[nodiscard]] bool has_signed_bl2(const PublicKey& key, const FileScan& file);

}  // namespace sealwright
