#include "artefact/boot_check.h"

namespace sealwright {

namespace {

std::optional<SecuredBl1> find_bl1(const FileSource& image, std::size_t efuse_size) {
  const bool sb10_first = efuse_size == facts_of(Scheme::sb10).efuse_length;
  const Scheme first = sb10_first ? Scheme::sb10 : Scheme::sb20;
  const Scheme second = sb10_first ? Scheme::sb20 : Scheme::sb10;
  const auto found = find_secured_bl1(image.end(), image.size(), first);
  return found ? found : find_secured_bl1(image.end(), image.size(), second);
}

void read_to_end(FileSource& file) {
  while (!file.next().empty()) {
  }
}

}  // namespace

BootCheck check_boot_chain(BootChain& chain) {
  BootCheck check = {};
  check.bl1 = find_bl1(chain.bl1, chain.efuse.size());
  const ByteView efuse = chain.efuse.end();  // the whole of it: eFuse data is shorter than an end
  CodeOpener code(check.bl1, efuse, chain.code ? &*chain.code : nullptr);
  const FileScan bl1 = scan(chain.bl1, [&](ByteView piece) { code.add(piece); });
  if (check.bl1) {
    check.fuses = fuses_hold(efuse, root_info_of(*check.bl1));
    check.keys = root_key_of(*check.bl1).regular && stage2_key_of(*check.bl1).regular;
    check.bl1_signature = verify_bl1_signature(*check.bl1, bl1);
  }
  if (chain.bl2) {
    const FileScan bl2 = scan(*chain.bl2);
    check.bl2_signature = check.bl1 && verify_bl2_signature(*check.bl1, bl2);
  }
  check.opened = code.finish();
  if (chain.code) {
    check.code = check.opened.is_expected;
    read_to_end(*chain.code);
  }
  read_to_end(chain.efuse);
  return check;
}

bool boots(const BootCheck& check) {
  return check.fuses && check.keys && check.bl1_signature && check.bl2_signature.value_or(true) &&
         check.opened.state == CodeState::opened && check.code.value_or(true);
}

}  // namespace sealwright
