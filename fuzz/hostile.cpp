// Damaged keys, signatures and encodings, and damaged files of every kind. Whatever comes, it ends;
// what is accepted, OpenSSL accepts or is what was made.

#include "artefact/key_encoding.h"
#include "artefact/public_key_import.h"
#include "crypto/cpu.h"
#include "inspect/boot.h"
#include "inspect/describe.h"
#include "scheme/private_key_file.h"
#include "seal/diagnosis.h"
#include "seal/options.h"
#include "tests/support/schemes.h"

namespace {

template <typename S>
const Sealed<S> sealed;

/// Whether a wrapper has to accept a signature, by its lenient rules.
bool judge(bool by_message, const Bytes& key, const Bytes& digest, const Bytes& signature) {
  const bool wide = signature.size() == 256, stated = wide && by_message;
  const auto length_at = [&](std::size_t at) {
    return static_cast<std::size_t>(static_cast<std::int32_t>(load_le32(&key[at])) / 4) * 4;
  };
  const std::size_t n_length = stated ? length_at(0) : signature.size();
  const std::size_t e_length = stated ? length_at(260) : 4;
  if (n_length < 24 || n_length > 256 || e_length < 4 || e_length > 256) return false;
  const Bytes n = slice(key, wide ? 4 : 0, n_length), e = slice(key, wide ? 264 : 128, e_length);
  if (n.back() < 0x80) return false;
  Bytes encoded = reversed(power(slice(signature, 0, n_length), Big(e), n).bytes(n_length));
  encoded[0] &= 0x7F;
  return pss_matches(n, digest, encoded);
}

template <typename S>
void verify_signature(const Choose& choose) {
  Key key = sealed<S>.key;
  const bool by_message = choose(2) == 0;
  Bytes covered = by_message ? some_bytes(1 + choose(99)) : Bytes(20);
  Bytes signature = reversed(pss_encode(key[0], by_message ? sha1(covered) : covered, choose(40)));
  if (choose(2) == 0) {
    key[1] = 1;  // the encoding is its own signature
  } else {
    signature = power(signature, key[2], key[0]).bytes(S::length);
  }
  Bytes public_key = public_key_of(key, S::length);
  Bytes* parts[] = {&public_key, &signature, &covered};
  damage(*parts[choose(3)], choose);
  signature.resize(S::length);
  public_key.resize(1024);  // as the tool has it
  covered.resize(by_message ? covered.size() + 1 : 20);
  const Bytes digest = by_message ? sha1(covered) : covered;
  const bool good = judge(by_message, public_key, digest, signature);
  require(verify(by_message, public_key, covered, signature) == (good ? 0 : 0xFFF20090), "verdict");
}

/// One file of every kind, all of one key, which is root and stage-2 key.
template <typename S>
struct Folder {
  static constexpr bool v11 = S::length == 128;
  const Sealed<S>& good = sealed<S>;
  Bytes efuse = good.efuse, bl1 = joined(good.code, bytes_of(good.context));
  Bytes public_file = public_key_of(good.key, S::length);
  Bytes private_file =
      v11 ? joined(header_of(sb10_private_key_text, 604), good.list) : joined(good.list, Bytes(12));
  Bytes bl2 = joined(good.code, signature_of(good.key, sha1(good.code)));

  explicit Folder(bool stage2) {
    if (stage2) {
      public_file =
          joined(header_of(sb10_public_key_text, 140), bytes_of(128U), good.key[0].bytes(128),
                 bytes_of(4U), good.key[1].bytes(4), bytes_of(128U));
    } else {
      public_file = joined(public_file, slice(bytes_of(good.context.publicKeyInfo),
                                              public_file.size(), sha1_digest_length));
    }
    public_file.resize(stage2 ? 308 : v11 ? 280 : 548);
  }
  static Bytes signature_of(const Key& key, const Bytes& digest) {
    return power(reversed(pss_encode(key[0], digest, 20)), key[2], key[0]).bytes(S::length);
  }
  std::vector<Bytes*> files() { return {&efuse, &bl1, &public_file, &private_file, &bl2}; }
};

/// Files named together: what one is said to be to another is said back, files of one key go with
/// each other, and a damaged one goes with others only where its key is not what was damaged.
template <typename S>
void compare_files(Folder<S>& folder, const Folder<S>& before, std::size_t damaged) {
  sealwright::FileSet set;
  for (const Bytes* file : folder.files()) add_file(set, sealwright::scan_bytes(*file));
  for (const auto& report : describe(set, {"a", "b", "c", "d", "e"})) {
    require(!to_json(report).empty() && !to_text("file", report).empty(), "a report");
  }
  const auto standings = relate(set);
  const auto goes_with = [&](std::size_t i, std::size_t other) {
    return std::ranges::any_of(standings[i].goes_with,
                               [&](const auto& relation) { return relation.other == other; });
  };
  const bool stage2_file = folder.public_file.size() == 308;
  for (std::size_t i = 0; i < 5; ++i) {
    // A public key may be that of a damaged BL1, and that one the only root key of the fuses.
    const bool may_stray = i == damaged || i == 2 || (i == 0 && damaged == 1 && stage2_file);
    require(may_stray || !standings[i].is_stray, "a stray of one key");
    for (std::size_t j = 0; j < 5; ++j) {
      require(goes_with(i, j) == goes_with(j, i), "said by one alone");
      // eFuse data and a stage-2 file, eFuse data with private keys and BL2, and each with itself.
      const bool apart =
          i == j || (i == 0 && j > 2) || (j == 0 && i > 2) || (i + j == 2 && i != j && stage2_file);
      require(apart || i == damaged || j == damaged || goes_with(i, j), "a relation overlooked");
    }
  }
  const bool related = !standings[damaged].goes_with.empty();
  if (damaged == 0) require(related == (folder.efuse == before.efuse), "fuses");
  if (damaged == 4 && related) {
    const std::size_t at = folder.bl2.size() - S::length;
    require(pss_verify(before.good.key[0], before.good.key[1], sha1(slice(folder.bl2, 0, at)),
                       slice(folder.bl2, at, S::length)),
            "a BL2 that was not signed");
  }
  if (damaged == 2 && related) {  // n and e stand in all forms where they stood
    const std::size_t n = Folder<S>::v11 ? (stage2_file ? 40 : 0) : 4;
    require(slice(folder.public_file, n, S::length) == before.good.key[0].bytes(S::length),
            "another key");
  }
}

template <typename S>
void inspect_files(const Choose& choose) {
  using namespace sealwright;
  Folder<S> folder(S::length == 128 && choose(2) == 0);
  const Folder<S> before = folder;
  const Sealed<S>& good = sealed<S>;
  const std::size_t damaged = choose(5);
  damage(*folder.files()[damaged], choose);
  Bytes& private_file = folder.private_file;
  private_file.resize((private_file.size() + 15) / 16 * 16);
  do_PrivateKey_Encrypt(folder.v11 ? 1 : 2, private_file.data(), length_of(private_file));
  compare_files(folder, before, damaged);
  // Nothing covers the end of the context.
  const std::size_t covered = good.code.size() + offsetof(typename S::Context, funcPtrTable);
  const auto& [efuse, bl1] = std::tie(folder.efuse, folder.bl1);
  const bool same = efuse == good.efuse && bl1.size() == before.bl1.size() &&
                    slice(bl1, 0, covered) == slice(before.bl1, 0, covered);
  BootChain pair = {FileSource(efuse), FileSource(bl1), FileSource(private_file)};
  require(!describe_boot(pair).problems.empty(), "a file taken for a signed image");
  BootChain first_alone = {FileSource(efuse), FileSource(bl1)};
  const bool boots = describe_boot(first_alone).problems.empty();
  require(same || !boots, "an image that was not made");
}

template <typename S>
void import_key(const Choose& choose) {
  using namespace sealwright;
  const Bytes stored = public_key_of(sealed<S>.key, S::length);
  decltype(S::Context::stage2PublicKey) record;
  std::ranges::copy(stored, writable_view_of(record).begin());
  const PublicKey key = to_public_key(record);
  const std::string pem = encode_pem(key);
  const bool text = choose(2) == 0;
  Bytes file = text ? Bytes(pem.begin(), pem.end()) : encode_der(key);
  damage(file, choose);
  const ImportedKey imported = import_public_key(file, key.scheme);
  require(imported.key.has_value() == imported.refusal.empty(), "a key or a reason");
  // DER writes a key in one way alone, and the short form is another length.
  const bool is_short = file.size() < encode_der(key).size();
  const bool same = !imported.key || text || is_short || encode_der(*imported.key) == file;
  require(same, "DER that says the same in another way");
  if (choose(2) == 0) file.resize(S::length);  // so that it may be a signature
  const KeyCandidate candidate = {"key", key};
  require(!diagnose({file, some_bytes(20), {}}, {&candidate, 1}).empty(), "a guess");
}

/// Command lines of the companion that makes keys and images. What is taken for one has all that
/// its verb needs, and nothing is read or written yet.
void read_command_line(const Choose& choose) {
  static const std::vector<std::string> known = [] {
    std::istringstream in(
        "root-key stage2-key bl1 bl2 export-key --json --root --scheme 2.1 --scheme=1.1 "
        "--build-info --stage2-key --padded --prepare --root= --private-key --signature "
        "--public-key --help --version -- - name");
    return std::vector<std::string>(std::istream_iterator<std::string>(in), {});
  }();
  std::vector<std::string> words(choose(12));
  for (std::string& word : words) {
    const std::size_t which = choose(known.size() + 1);  // or an empty one
    if (which < known.size()) word = known[which];
    Bytes bytes(word.begin(), word.end());
    if (choose(8) == 7) damage(bytes, choose);
    word.assign(bytes.begin(), bytes.end());
  }
  std::vector<char*> arguments;
  for (std::string& word : words) arguments.push_back(word.data());
  using namespace sealwright;
  const Options options = read_options(arguments);
  require((options.request == Request::refuse) != options.complaint.empty(), "a reason");
  if (options.request != Request::make) return;
  const bool images = options.verb == Verb::bl1 || options.verb == Verb::bl2;
  const std::size_t names = images || options.verb == Verb::export_key ? 2 : 1;
  const bool keys = (!images || options.stage2_key != nullptr) &&
                    (options.verb != Verb::bl1 || options.root != nullptr);
  require(keys && options.verb != Verb::none && options.names.size() == names, "all it needs");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // What the input lacks counts as zero.
  const auto byte = [&] { return size == 0 ? std::size_t{0} : (--size, std::size_t{*data++}); };
  const Choose choose = [&](std::size_t limit) {
    return (byte() + (limit > 256 ? byte() << 8 : 0)) % limit;
  };
  const std::size_t form = byte();
  sealwright::force_crypto_paths(
      {(form & 4) == 0, (form & 8) == 0, (form & 16) == 0, (form & 32) == 0});
  const bool v11 = (form & 1) != 0;
  if ((form & 128) != 0) {
    read_command_line(choose);
  } else if ((form & 64) != 0) {
    v11 ? import_key<V11>(choose) : import_key<V21>(choose);
  } else if ((form & 2) != 0) {
    v11 ? inspect_files<V11>(choose) : inspect_files<V21>(choose);
  } else {
    v11 ? verify_signature<V11>(choose) : verify_signature<V21>(choose);
  }
  return 0;
}
