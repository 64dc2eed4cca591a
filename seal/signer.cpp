#include "seal/signer.h"

#include <utility>

#include "base/wipe.h"
#include "crypto/checked_signature.h"
#include "crypto/prng.h"
#include "crypto/pss.h"

namespace sealwright {

namespace {

ByteView stored_key(const PublicKey& key) {
  return std::visit([](const auto& stored) { return view_of(stored); }, key.stored);
}

}  // namespace

Signer key_signer(const PrivateKey& key, std::string file) {
  const auto sign = [&key, file = std::move(file)](WritableBytes signature,
                                                   const SigningTask& task) -> Objection {
    const Status status = sign_digest_checked(signature, signing_key_of(key),
                                              stored_key(task.key).data(), task.digest.data());
    wipe_dead_stack();
    if (status == ZEB_SUCCESS) return std::nullopt;
    return refuse(file,
                  "signing with it failed: the key is damaged, or this machine miscalculates");
  };
  return {"file", sign};
}

Objection obtain_signature(Signature& signature, const Signer& signer, const SigningTask& task) {
  signature.length = task.key.modulus.size();
  const WritableBytes room = WritableBytes(signature.room).first(signature.length);
  if (Objection objection = signer.sign(room, task)) return objection;
  const PssFindings findings =
      check_new_signature(signature.bytes(), numbers_of(task.key), task.digest);
  if (findings.verdict == PssVerdict::valid) return std::nullopt;
  return Complaint{ExitStatus::refused, "the signature that was made does not verify"};
}

Objection require_random_source() {
  if (random_source_available()) return std::nullopt;
  return give_up("/dev/random", "no random numbers to be had: nothing secret can be made here");
}

}  // namespace sealwright
