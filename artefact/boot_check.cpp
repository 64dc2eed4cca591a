#include "artefact/boot_check.h"

namespace sealwright {

namespace {

std::optional<SecuredBl1> find_bl1(ByteView image, std::size_t efuse_size) {
  const bool sb10_first = efuse_size == facts_of(Scheme::sb10).efuse_length;
  const Scheme first = sb10_first ? Scheme::sb10 : Scheme::sb20;
  const Scheme second = sb10_first ? Scheme::sb20 : Scheme::sb10;
  const ByteView end = end_of_image(image);
  const auto found = find_secured_bl1(end, image.size(), first);
  return found ? found : find_secured_bl1(end, image.size(), second);
}

}  // namespace

BootCheck check_boot_chain(const BootChain& chain) {
  BootCheck check = {};
  check.bl1 = find_bl1(chain.bl1, chain.efuse.size());
  // The code is opened and hashed while the signature check hashes it as stored.
  auto opened = start_open_code(check.bl1, chain.bl1, chain.efuse, chain.code);
  if (check.bl1) {
    check.fuses = fuses_hold(chain.efuse, root_info_of(*check.bl1));
    check.keys = root_key_of(*check.bl1).regular && stage2_key_of(*check.bl1).regular;
    check.bl1_signature = verify_bl1_signature(*check.bl1, scan_bytes(chain.bl1));
  }
  if (chain.bl2) {
    check.bl2_signature = check.bl1 && verify_bl2_signature(*check.bl1, scan_bytes(*chain.bl2));
  }
  check.opened = opened.get();
  if (chain.code) check.code = check.opened.is_expected;
  return check;
}

bool boots(const BootCheck& check) {
  return check.fuses && check.keys && check.bl1_signature && check.bl2_signature.value_or(true) &&
         check.opened.state == CodeState::opened && check.code.value_or(true);
}

}  // namespace sealwright
