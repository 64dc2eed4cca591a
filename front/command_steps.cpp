#include "front/command_steps.h"

#include <cstdio>
#include <tuple>

#include "crypto/prng.h"
#include "util/process.h"

namespace sealwright {

void require_randomness() {
  if (!random_source_available()) abort_run();
}

std::int32_t make_key_pair(const char* line,
                           Status (*generate)(std::int32_t mode, const char* name),
                           std::int32_t mode, const char* base_name) {
  require_randomness();
  std::fputs(line, stdout);
  // Quirk: the result is 0 also when nothing could be made; scripts depend on it.
  std::ignore = generate(mode, base_name);
  return 0;
}

std::int32_t print_verdict(bool valid, const char* success_line, const char* failure_line) {
  std::fputs(valid ? success_line : failure_line, stdout);
  return valid ? 0 : -1;
}

}  // namespace sealwright
