#include "front/texts.h"

#include <array>
#include <cstdio>
#include <initializer_list>

namespace {

constexpr const char* notice[] = {
    "Sealwright prepares keys and signed boot images for two-stage secure boot.\n",
    "Fused keys cannot be replaced: keep a backup of the root key files.\n",
    "No output file means failure: verify every image before you ship it.\n",
    "There is no warranty, to the extent that the law permits.\n",
    "Licence: MIT, see the file LICENSE.\n",
    "Manual: man Sealwright_V21; formats and safe use: the docs folder.\n\n",
};

void print_banner(const char* title) {
  std::fputs("\n", stdout);
  std::fputs(title, stdout);
  for (const char* line : notice) std::fputs(line, stdout);
}

/// One command: what for, how, an example, what comes of it.
using Block = std::array<const char*, 4>;

// clang-format off
constexpr Block sb20_root_keys = {
    "Usage: Vextral T.QRV's own Keypair generation\n",
    "#>Sealwright_V21 -v2.1 -KEYGEN\n",
    "ex) #>Sealwright_V21 -v2.1 -KEYGEN\n",
    "publicKeyInfo_V21.dat, privateKey_V21.dat and eFuseData_V21.dat are generated.\n",
};
constexpr Block sb20_stage2_keys = {
    "Usage: Customer's own Keypair generation\n",
    "#>Sealwright_V21 -v2.1 <key file> -STAGE2_KEYGEN\n",
    "ex) #>Sealwright_V21 -v2.1 stage2Key -STAGE2_KEYGEN\n",
    "stage2Key_V21.spk and stage2Key_V21.prv are generated.\n",
};
constexpr Block sb20_bl1 = {
    "Usage: For Secured BL1 code generation\n",
    "#>Sealwright_V21 -v2.1 <source file> <destination file> -STAGE1\n",
    "ex) #>Sealwright_V21 -v2.1 BL1.bin secured_BL1_V21.bin -STAGE1\n",
    "secured_BL1_V21.bin is generated.\n",
};
constexpr Block sb20_bl2 = {
    "Usage: For Secured BL2 code generation\n",
    "#>Sealwright_V21 -v2.1 <source file> <destination file> <private key file> -STAGE2\n",
    "ex) #>Sealwright_V21 -v2.1 BL2.bin secured_BL2_V21.bin stage2Key_V21.prv -STAGE2\n",
    "secured_BL2_V21.bin is generated.\n",
};
constexpr Block sb20_verify_bl1 = {
    "Usage: For Proof of Posession of Private Key\n",
    "#>Sealwright_V21 -v2.1 <secured_BL1_V21.bin> <eFuseData_V21.dat> -VERIFY\n",
    "ex) #>Sealwright_V21 -v2.1 secured_BL1_V21.bin eFuseData_V21.dat -VERIFY\n",
    "The Proof of Posession of Private Key is verified\n",
};
constexpr Block sb20_verify_bl2 = {
    "Usage: For Secured BL2 code verification\n",
    "#>Sealwright_V21 -v2.1 <secured_BL2_V21.bin> <public key file> -STAGE2_VERIFY\n",
    "ex) #>Sealwright_V21 -v2.1 secured_BL1_V21.bin  stage2Key_V21.spk -STAGE2_VERIFY\n",
    "secured_BL2_V21.bin is verified.\n",
};
// Quirk: this text names the stage-2 image where the full one names the stage-1 image; scripts that
// compare the texts depend on it.
constexpr Block sb20_client_verify_bl2 = {
    "Usage: For Secured BL2 code verification\n",
    "#>Sealwright_V21 -v2.1 <secured_BL2_V21.bin> <public key file> -STAGE2_VERIFY\n",
    "ex) #>Sealwright_V21 -v2.1 secured_BL2_V21.bin  stage2Key_V21.spk -STAGE2_VERIFY\n",
    "secured_BL2_V21.bin is verified.\n",
};
constexpr Block sb10_root_keys = {
    "Usage: Vextral T.QRV's own Keypair generation\n",
    "#>Sealwright_V21 -v1.1 -KEYGEN\n",
    "ex) #>Sealwright_V21 -v1.1 -KEYGEN\n",
    "publicKeyInfo.dat, privateKey.dat and eFuseData.dat are generated.\n",
};
constexpr Block sb10_stage2_keys = {
    "Usage: Customer's own Keypair generation\n",
    "#>Sealwright_V21 -v1.1 <key file> -STAGE2_KEYGEN\n",
    "ex) #>Sealwright_V21 -v1.1 stage2Key -STAGE2_KEYGEN\n",
    "stage2Key.spk and stage2Key.prv are generated.\n",
};
constexpr Block sb10_bl1 = {
    "Usage: For Secured BL1 code generation\n",
    "#>Sealwright_V21 -v1.1 <source file> <destination file> -STAGE1\n",
    "ex) #>Sealwright_V21 -v1.1 BL1.bin secured_BL1_V11.bin -STAGE1\n",
    "secured_BL1_V11.bin is generated.\n",
};
constexpr Block sb10_bl2 = {
    "Usage: For Secured BL2 code generation\n",
    "#>Sealwright_V21 -v1.1 <source file> <destination file> <private key file> -STAGE2\n",
    "ex) #>Sealwright_V21 -v1.1 BL2.bin secured_BL2.bin stage2Key.prv -STAGE2\n",
    "secured_BL2.bin is generated.\n",
};
constexpr Block sb10_verify_bl1 = {
    "Usage: For Proof of Posession of Private Key\n",
    "#>Sealwright_V21 -v1.1 <secured_BL1_V11.bin> <eFuseData.dat> -VERIFY\n",
    "ex) #>Sealwright_V21 -v1.1 <secured_BL1_V11.bin> <eFuseData.dat> -VERIFY\n",
    "The Proof of Posession of Private Key is verified\n",
};
constexpr Block sb10_verify_bl2 = {
    "Usage: For Secured BL2 code verification\n",
    "#>Sealwright_V21 -v1.1 <secured_BL2.bin> <public key file> -STAGE2_VERIFY\n",
    "ex) #>Sealwright_V21 -v1.1 secured_BL2.bin  stage2Key.spk -STAGE2_VERIFY\n",
    "secured_BL2.bin is verified.\n",
};
// clang-format on

void print_blocks(std::initializer_list<Block> blocks) {
  for (const Block& block : blocks) {
    for (const char* line : block) std::fputs(line, stdout);
    std::fputs("\n\n", stdout);
  }
}

}  // namespace

namespace sealwright {

void print_sb20_banner() {
  print_banner("***Sealwright v2.1 for Vextral Application Processor***\n");
}

void print_sb10_banner() {
  print_banner("***Sealwright v1.1 for Vextral Application Processor***\n");
}

void print_version_line() {
  // Quirk: one version for both schemes; scripts depend on this line.
  std::fputs("sealWright version 2.1\n", stdout);
}

void print_short_usage() {
  std::fputs("sealwright_V21 -v1.1(or -v2.1) -help\n", stdout);
}

}  // namespace sealwright

void print_SB20_Usage() {
  print_blocks(
      {sb20_root_keys, sb20_stage2_keys, sb20_bl1, sb20_bl2, sb20_verify_bl1, sb20_verify_bl2});
}

void print_SB10_Usage() {
  print_blocks(
      {sb10_root_keys, sb10_stage2_keys, sb10_bl1, sb10_bl2, sb10_verify_bl1, sb10_verify_bl2});
}

void print_SB20_Usage_Stage2() {
  print_blocks({sb20_stage2_keys, sb20_bl2, sb20_client_verify_bl2});
}

void print_SB10_Usage_Stage2() {
  print_blocks({sb10_stage2_keys, sb10_bl2, sb10_verify_bl2});
}
