#include "seal/root_set.h"

#include "artefact/escape.h"

namespace sealwright {

namespace {

Scheme other_than(Scheme scheme) {
  return scheme == Scheme::sb20 ? Scheme::sb10 : Scheme::sb20;
}

/// A folder with the keys of the other scheme alone.
Objection find_other_scheme(const std::string& folder, const Stage2File& stage2) {
  const Scheme wanted = stage2.key.scheme;
  const Scheme other = other_than(wanted);
  const bool other_alone = !exists(join_path(folder, key_names(wanted).root_public)) &&
                           exists(join_path(folder, key_names(other).root_public));
  if (!other_alone) return std::nullopt;
  return refuse(folder, std::string("holds root keys of scheme ") + facts_of(other).name +
                            ", but " + show_name(stage2.file.name) + " is of scheme " +
                            facts_of(wanted).name);
}

Objection read_public_file(RootSet& set, std::string name, const Stage2File& stage2) {
  if (Objection objection = read_input(set.public_file, std::move(name))) return objection;
  const auto info = read_root_info(set.public_file.bytes());
  const Scheme scheme = stage2.key.scheme;
  if (!info || root_key_of(*info).scheme != scheme) {
    const char* lengths = scheme == Scheme::sb20 ? "548 bytes, or 288" : "280 bytes, or 152";
    return refuse(set.public_file.name,
                  std::to_string(set.public_file.bytes().size()) + " bytes: a root public key of " +
                      "scheme " + facts_of(scheme).name + " has " + lengths + " without its proof");
  }
  set.info = *info;
  set.key = root_key_of(*info);
  if (!set.key.regular) {
    return refuse(set.public_file.name, "damaged: its modulus, exponent or lengths are none");
  }
  if (!is_same_key(set.key, stage2.key)) return std::nullopt;
  return refuse(stage2.file.name,
                "the root key itself (" + show_name(set.public_file.name) +
                    "); make a stage-2 key with: Sealwright_seal stage2-key NAME");
}

Objection read_efuse(RootSet& set, std::string name) {
  if (Objection objection = read_input(set.efuse, std::move(name))) return objection;
  const std::size_t length = facts_of(set.key.scheme).efuse_length;
  const std::size_t found = set.efuse.bytes().size();
  if (found != length) {
    return refuse(set.efuse.name, std::to_string(found) + " bytes: eFuse data of scheme " +
                                      facts_of(set.key.scheme).name + " has " +
                                      std::to_string(length));
  }
  if (fuses_hold(set.efuse.bytes(), set.info)) return std::nullopt;
  return refuse(set.efuse.name, "does not belong to the root key in " +
                                    show_name(set.public_file.name) +
                                    ": one of the two is of another set, or damaged");
}

}  // namespace

Objection read_root_set(RootSet& set, const char* folder, PrivateHalf private_half,
                        const Stage2File& stage2) {
  if (Objection objection = find_other_scheme(folder, stage2)) return objection;
  const KeyNames& names = key_names(stage2.key.scheme);
  if (Objection objection = read_public_file(set, join_path(folder, names.root_public), stage2)) {
    return objection;
  }
  if (Objection objection = read_efuse(set, join_path(folder, names.efuse))) return objection;
  if (private_half == PrivateHalf::elsewhere) return std::nullopt;
  return read_private_half(set.private_file, join_path(folder, names.root_private), KeyRole::root,
                           set.key, set.public_file.name);
}

}  // namespace sealwright
