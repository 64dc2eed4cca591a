// Key files that decrypt to anything: the parser of key lists, the signer that checks itself, both
// stage-2 signers and the reader of version 1.1 public-key files.

#include <sys/mman.h>
#include <unistd.h>

#include "crypto/checked_signature.h"
#include "crypto/key_items.h"
#include "fuzz/judge.h"
#include "sb10/key_store.h"
#include "sb10/stage2.h"
#include "sb20/stage2.h"
#include "scheme/private_key_file.h"

namespace {

/// Path of a file in memory with this content.
std::string path_of(const Bytes& content) {
  static const int descriptor = memfd_create("fuzz", MFD_CLOEXEC);
  const bool written = ftruncate(descriptor, 0) == 0 &&
                       pwrite(descriptor, content.data(), content.size(), 0) == std::ssize(content);
  require(written, "no file in memory");
  return "/proc/self/fd/" + std::to_string(descriptor);
}

/// Compares a signer that checks itself with what it has to do with a key list: make a signature of
/// `room` bytes that the key's public part verifies, or write nothing and return `refusal`.
template <typename Signer>
void expect(const Bytes& list, bool crt, const Bytes& message, std::size_t room, Status refusal,
            Signer sign) {
  Bytes public_key(list.begin() + (crt || list.size() < 4 ? 0 : 4), list.end());
  public_key.resize(private_key_capacity);
  if (!crt) store_le32(&public_key[128], 65537);
  const Bytes made = judge_sign(list, crt, sha1(message));
  const bool good = made.size() == room && judge_verify(public_key, made, sha1(message));
  Bytes signature(room, 0xA5);
  const Bytes signature_after = good ? made : signature;
  const Status status = sign(public_key.data(), signature.data());
  require(status == (good ? ZEB_SUCCESS : refusal), "status of a checked signer");
  require(signature == signature_after, "signature of a checked signer");
}

void use_list(const Bytes& list, bool crt, const Bytes& message) {
  ZEB_RSA_PRIVATE_KEY key = {};
  const KeyItemLayout layout = crt ? KeyItemLayout::crt : KeyItemLayout::plain;
  const bool usable = read_private_key(list.data(), length_of(list), layout, key);
  require(usable == !judge_key(list, crt).empty(), "usable or not");
  for (const std::uint32_t room : {128U, 256U}) {
    const Bytes digest = sha1(message);
    const Bytes made = judge_sign(list, crt, digest);
    Bytes signature(room, 0xA5);
    const Bytes signature_after = made.size() == room ? made : signature;
    sign_digest_at_size(crt ? 1 : 0, list.data(), length_of(list), digest.data(), signature.data(),
                        room);
    require(signature == signature_after, "signature of this size");
    expect(list, crt, message, room, SIGN_ERR_RSA, [&](auto* public_key, auto* signature) {
      return sign_message_checked({signature, room}, {crt ? 1 : 0, list}, public_key, message);
    });
  }
}

/// Encrypts a record and signs stage 2 with it as the private-key file.
void sign_stage2(Bytes record, bool crt, const Bytes& message) {
  const std::int32_t mode = crt ? key_file_mode_v21 : key_file_mode_v11;
  record.reserve(private_key_capacity);  // a pointer also to an empty record
  do_PrivateKey_Encrypt(mode, record.data(), length_of(record));
  const std::string path = path_of(record);
  if (!crt) record.resize(sizeof(Sb10PrivateKeyFile));
  const Status opened = do_PrivateKey_Decrypt(mode, record.data(), length_of(record));
  Bytes list = record;
  if (crt) {
    list.resize(record.size() - std::min<std::size_t>(record.size(), 12));
  } else {
    list.clear();
    for (const std::size_t at : {36U, 168U}) {
      const std::size_t length = load_le32(&record[at]);
      if (length > record.size() - at - 4) break;
      list.insert(list.end(), &record[at], &record[at] + 4 + length);
    }
  }
  if (crt && opened != ZEB_SUCCESS) list.clear();
  const Status refusal = crt && opened != ZEB_SUCCESS ? opened : SIGN_ERR_RSA;
  std::uint32_t length = crt ? 256 : 128;
  expect(list, crt, message, length, refusal, [&](auto*, auto* signature) {
    const auto sign = crt ? sb20_Generate_Stage2 : sb10_Generate_Stage2;
    return sign(path.c_str(), message.data(), length_of(message), signature, &length);
  });
}

void read_public_key(Bytes record) {
  const std::string path = path_of(record);
  record.resize(sizeof(Sb10PublicKeyFile));
  const std::size_t n_length = load_le32(&record[36]);
  const std::size_t e_length = load_le32(&record[168]);
  if (n_length > public_key_capacity) return;  // aborts on purpose
  Bytes judged;
  if (n_length <= record.size() - 40 && e_length <= record.size() - 172) {
    judged.assign(&record[40], &record[40] + n_length);
    judged.insert(judged.end(), &record[172], &record[172] + e_length);
  }
  judged.resize(public_key_capacity);
  load_sb10_stage2_public_key(path.c_str());
  require(std::ranges::equal(publicKey, judged), "public key of a file");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const bool silent = std::freopen("/dev/null", "w", stdout) != nullptr;
  require(silent, "no /dev/null");
  FuzzInput input(data, size);
  const std::uint8_t form = input.byte();
  const bool crt = (form & 1) != 0;
  const Bytes message = input.bytes(1 + input.byte() % 64);
  if ((form & 6) == 0) use_list(input.key_list(), crt, message);
  if ((form & 6) == 2) sign_stage2(input.key_list(), crt, message);
  if ((form & 6) == 4) read_public_key(input.rest(400));
  return 0;
}
