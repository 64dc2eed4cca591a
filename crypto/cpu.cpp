#include "crypto/cpu.h"

#if CRYPTO_PATHS_X86
#include <cpuid.h>
#elif CRYPTO_PATHS_ARM
#include <asm/hwcap.h>
#include <sys/auxv.h>
#endif

#include "crypto/digit.h"

namespace sealwright {

namespace {

CryptoPaths& paths_in_force() {
  static CryptoPaths paths = available_crypto_paths();
  return paths;
}

}  // namespace

const CryptoPaths& crypto_paths() {
  return paths_in_force();
}

CryptoPaths available_crypto_paths() {
  CryptoPaths paths = {};
  paths.bn_limbs = has_double_limbs;
#if CRYPTO_PATHS_X86
  unsigned eax = 0;
  unsigned ebx = 0;
  unsigned ecx = 0;
  unsigned edx = 0;
  if (__get_cpuid(1, &eax, &ebx, &ecx, &edx) == 0) return paths;
  const bool sse41 = (ecx & bit_SSSE3) != 0 && (ecx & bit_SSE4_1) != 0;
  paths.aes = sse41 && (ecx & bit_AES) != 0;
  if (__get_cpuid_count(7, 0, &eax, &ebx, &ecx, &edx) == 0) return paths;
  constexpr unsigned bit_sha_extensions = 1U << 29;
  paths.sha1 = sse41 && (ebx & bit_sha_extensions) != 0;
  constexpr unsigned bit_adx = 1U << 19;
  paths.bn_rows = (ebx & bit_BMI2) != 0 && (ebx & bit_adx) != 0;
#elif CRYPTO_PATHS_ARM
  const unsigned long capabilities = getauxval(AT_HWCAP);
  paths.sha1 = (capabilities & HWCAP_SHA1) != 0;
  paths.aes = (capabilities & HWCAP_AES) != 0;
#endif
  return paths;
}

void force_crypto_paths(const CryptoPaths& wanted) {
  const CryptoPaths available = available_crypto_paths();
  paths_in_force() = {wanted.sha1 && available.sha1, wanted.aes && available.aes,
                      wanted.bn_limbs && available.bn_limbs,
                      wanted.bn_limbs && wanted.bn_rows && available.bn_rows};
}

}  // namespace sealwright
