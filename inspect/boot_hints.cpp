#include "inspect/boot_hints.h"

#include <algorithm>

namespace sealwright {

namespace {

bool is_bl1(const FileSource& image) {
  return find_secured_bl1(image.end(), image.size(), Scheme::sb10).has_value() ||
         find_secured_bl1(image.end(), image.size(), Scheme::sb20).has_value();
}

/// The bytes of each group of so many in reverse order.
std::vector<std::uint8_t> reverse_groups(ByteView bytes, std::size_t length) {
  std::vector<std::uint8_t> turned(bytes.begin(), bytes.end());
  for (auto at = turned.begin(); turned.end() - at >= static_cast<std::ptrdiff_t>(length);
       at += static_cast<std::ptrdiff_t>(length)) {
    std::reverse(at, at + static_cast<std::ptrdiff_t>(length));
  }
  return turned;
}

/// How the fuses would hold the root key; empty when in none of the ways tried.
std::string find_byte_order(ByteView efuse, const RootInfo& info) {
  constexpr std::size_t word_length = sizeof(std::uint32_t);
  std::string order;
  if (fuses_hold(reverse_groups(efuse, efuse.size()), info)) order = "all bytes";
  if (fuses_hold(reverse_groups(efuse, word_length), info)) order = "the bytes of each word";
  return order;
}

}  // namespace

Sentences boot_hints(const BootChain& chain, const BootCheck& check) {
  Sentences hints;
  if (is_bl1(chain.efuse)) {
    hints.emplace_back("The first file is a secured BL1; eFuse data comes first.");
  } else if (!check.bl1 && chain.bl2 && is_bl1(*chain.bl2)) {
    hints.emplace_back("BL1 and BL2 are in the wrong order.");
  }
  if (!check.bl1 || check.fuses || chain.efuse.size() != facts_of(check.bl1->scheme).efuse_length) {
    return hints;
  }
  const std::string order = find_byte_order(chain.efuse.end(), root_info_of(*check.bl1));
  if (!order.empty()) {
    hints.push_back("The fuses would match with " + order +
                    " reversed: look at how they were read out.");
  }
  return hints;
}

}  // namespace sealwright
