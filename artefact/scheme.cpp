#include "artefact/scheme.h"

#include "crypto/rsa.h"
#include "sb10/records.h"
#include "sb20/records.h"

namespace sealwright {

const SchemeFacts& facts_of(Scheme scheme) {
  static constexpr SchemeFacts sb10 = {"1.1", sizeof RsaPublicKey1024::n, sb10_efuse_length, 65537};
  static constexpr SchemeFacts sb20 = {"2.1", sizeof RsaPublicKey2048::n, sb20_efuse_length, 3};
  return scheme == Scheme::sb10 ? sb10 : sb20;
}

}  // namespace sealwright
