#include "artefact/relations.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace sealwright {

namespace {

using KeyId = std::optional<std::size_t>;  // place among the distinct regular keys; none for others

/// What one content has to do with keys.
struct Facts {
  Scheme scheme = Scheme::sb20;
  KeyId root = {};                            // of a BL1
  KeyId stage2 = {};                          // of a BL1
  KeyId in_file = {};                         // of a public-key or private-key file
  KeyId signer = {};                          // of a BL2
  std::optional<std::size_t> root_info = {};  // place among the distinct ones
  std::vector<bool> holds = {};               // of eFuse data: which of the distinct infos
};

/// Everything that is tried or compared, each distinct value once.
struct Known {
  std::vector<PublicKey> keys;
  std::vector<bool> signs_bl2;  // by key: it is named as something else than a root key in a BL1
  std::vector<RootInfo> infos;
  std::vector<Facts> facts;  // by content
};

KeyId id_of(Known& known, const PublicKey& key, bool signs_bl2) {
  if (!key.regular) return std::nullopt;
  const auto at = std::ranges::find_if(
      known.keys, [&](const PublicKey& other) { return is_same_key(key, other); });
  const auto id = static_cast<std::size_t>(at - known.keys.begin());
  if (at == known.keys.end()) {
    known.keys.push_back(key);
    known.signs_bl2.push_back(false);
  }
  if (signs_bl2) known.signs_bl2[id] = true;
  return id;
}

ByteView bytes_of(const RootInfo& info) {
  return std::visit([](const auto& stored) { return view_of(stored); }, info);
}

std::size_t id_of(Known& known, const RootInfo& info) {
  const auto at = std::ranges::find_if(known.infos, [&](const RootInfo& other) {
    return std::ranges::equal(bytes_of(info), bytes_of(other));
  });
  const auto id = static_cast<std::size_t>(at - known.infos.begin());
  if (at == known.infos.end()) known.infos.push_back(info);
  return id;
}

Facts collect(Known& known, const FileContent& content) {
  Facts facts;
  if (const auto* efuse = std::get_if<EfuseFile>(&content)) {
    facts.scheme = efuse->scheme;
  } else if (const auto* file = std::get_if<PublicKeyFile>(&content)) {
    facts.scheme = file->key.scheme;
    facts.in_file = id_of(known, file->key, true);
    if (file->root_info) facts.root_info = id_of(known, *file->root_info);
  } else if (const auto* half = std::get_if<PrivateKeyFile>(&content)) {
    facts.scheme = half->key.scheme;
    facts.in_file = id_of(known, half->key, true);
  } else if (const auto* image = std::get_if<Bl1File>(&content)) {
    facts.scheme = image->bl1.scheme;
    facts.root = id_of(known, image->root_key, false);
    facts.stage2 = id_of(known, image->stage2_key, true);
    facts.root_info = id_of(known, root_info_of(image->bl1));
  } else if (const auto* bl2 = std::get_if<Bl2File>(&content)) {
    facts = {.scheme = bl2->signer.scheme, .signer = id_of(known, bl2->signer, true)};
  }
  return facts;
}

/// Turns a content into a BL2 when a key named has signed it.
void recognise_bl2(const Known& known, RecognisedFile& file, Facts& facts) {
  for (std::size_t id = 0; id < known.keys.size(); ++id) {
    if (!known.signs_bl2[id] || !has_signed_bl2(known.keys[id], file.scan)) continue;
    file.content = Bl2File{known.keys[id]};
    facts = {.scheme = known.keys[id].scheme, .signer = id};
    return;
  }
}

Known collect_all(FileSet& files) {
  Known known;
  for (const RecognisedFile& file : files.contents) {
    known.facts.push_back(collect(known, file.content));
  }
  for (std::size_t i = 0; i < files.contents.size(); ++i) {
    RecognisedFile& file = files.contents[i];
    if (may_be_bl2(file.content)) recognise_bl2(known, file, known.facts[i]);
    if (!std::holds_alternative<EfuseFile>(file.content)) continue;
    for (const RootInfo& info : known.infos) {
      known.facts[i].holds.push_back(fuses_hold(file.scan.end, info));
    }
  }
  return known;
}

bool same(const KeyId& a, const KeyId& b) {
  return a && a == b;
}

/// A content as the rules below see it.
struct Party {
  const FileContent& content;
  const Facts& facts;

  template <typename Kind>
  [[nodiscard]] bool is() const {
    return std::holds_alternative<Kind>(content);
  }
};

/// Whether the fuses hold the root key of a BL1 or a public-key file, be it regular or not.
bool hold(const Party& fuses, const Party& root) {
  return root.facts.root_info && fuses.facts.holds[*root.facts.root_info];
}

using Roles = std::vector<std::pair<Role, Role>>;  // of the second to the first, and back

/// How two files relate whose kinds stand in this order: eFuse data, BL2, private key, BL1 before
/// public key.
Roles roles_between(const Party& a, const Party& b) {
  const Facts& mine = a.facts;
  const Facts& its = b.facts;
  Roles roles;
  if (a.is<EfuseFile>()) {
    const bool regular = b.is<Bl1File>() ? its.root.has_value() : its.in_file.has_value();
    if (regular && hold(a, b)) roles.emplace_back(Role::root_key, Role::fuses);
  } else if (a.is<Bl2File>()) {
    if (same(mine.signer, its.in_file) || same(mine.signer, its.stage2)) {
      roles.emplace_back(Role::signer, Role::signed_image);
    }
  } else if (a.is<PrivateKeyFile>() && (b.is<Bl1File>() || b.is<PublicKeyFile>())) {
    if (same(mine.in_file, its.in_file) || same(mine.in_file, its.root) ||
        same(mine.in_file, its.stage2)) {
      roles.emplace_back(Role::public_half, Role::private_half);
    }
  } else if (a.is<Bl1File>() && b.is<PublicKeyFile>()) {
    if (same(mine.root, its.in_file)) roles.emplace_back(Role::root_key, Role::root_key);
    if (same(mine.stage2, its.in_file)) roles.emplace_back(Role::stage2_key, Role::stage2_key);
  }
  return roles;
}

/// Whether `a` could belong to `b` by their kinds.
bool could_belong(const Party& a, const Party& b) {
  if (a.facts.scheme != b.facts.scheme) return false;
  if (a.is<EfuseFile>()) return b.facts.root_info.has_value();
  const bool has_key = a.facts.in_file.has_value();  // one that can be compared
  if (a.is<PrivateKeyFile>()) return has_key && (b.is<Bl1File>() || b.is<PublicKeyFile>());
  return a.is<PublicKeyFile>() && has_key && b.is<Bl1File>();
}

bool belongs(const Party& a, const Party& b) {
  if (a.is<EfuseFile>()) return hold(a, b);
  return !roles_between(a, b).empty() || !roles_between(b, a).empty();
}

bool same_contents(const FileScan& a, const FileScan& b) {
  return a.size == b.size && a.end == b.end &&
         digest_before(a, a.end.size(), {}) == digest_before(b, b.end.size(), {});
}

}  // namespace

void add_file(FileSet& files, FileScan scan) {
  const auto at = std::ranges::find_if(
      files.contents, [&](const RecognisedFile& other) { return same_contents(scan, other.scan); });
  files.content_of.push_back(static_cast<std::size_t>(at - files.contents.begin()));
  if (at == files.contents.end()) files.contents.push_back(recognise_file(std::move(scan)));
}

std::vector<Standing> relate(FileSet& files) {
  const Known known = collect_all(files);
  const std::size_t count = files.content_of.size();
  std::vector<Standing> standings(count);
  const auto party = [&](std::size_t file) {
    const std::size_t at = files.content_of[file];
    return Party{files.contents[at].content, known.facts[at]};
  };
  for (std::size_t i = 0; i < count; ++i) {
    bool could = false;
    bool does = false;
    for (std::size_t j = 0; j < count; ++j) {
      for (const auto& [other_is, this_is] : roles_between(party(i), party(j))) {
        standings[i].goes_with.push_back({j, other_is});
      }
      for (const auto& [other_is, this_is] : roles_between(party(j), party(i))) {
        standings[i].goes_with.push_back({j, this_is});
      }
      could = could || could_belong(party(i), party(j));
      does = does || (could_belong(party(i), party(j)) && belongs(party(i), party(j)));
    }
    standings[i].is_stray = could && !does;
  }
  return standings;
}

}  // namespace sealwright
