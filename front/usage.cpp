#include "front/usage.h"

#include <array>
#include <cstdio>
#include <initializer_list>

namespace {

/// One command: what for, how, an example, what comes of it.
using Block = std::array<const char*, 4>;

// clang-format off
constexpr Block v21_root_keys = {
    "Usage: Vextral T.QRV's own Keypair generation\n",
    "#>Sealwright_V21 -v2.1 -KEYGEN\n",
    "ex) #>Sealwright_V21 -v2.1 -KEYGEN\n",
    "publicKeyInfo_V21.dat, privateKey_V21.dat and eFuseData_V21.dat are generated.\n",
};
constexpr Block v21_stage2_keys = {
    "Usage: Customer's own Keypair generation\n",
    "#>Sealwright_V21 -v2.1 <key file> -STAGE2_KEYGEN\n",
    "ex) #>Sealwright_V21 -v2.1 stage2Key -STAGE2_KEYGEN\n",
    "stage2Key_V21.spk and stage2Key_V21.prv are generated.\n",
};
constexpr Block v21_bl1 = {
    "Usage: For Secured BL1 code generation\n",
    "#>Sealwright_V21 -v2.1 <source file> <destination file> -STAGE1\n",
    "ex) #>Sealwright_V21 -v2.1 BL1.bin secured_BL1_V21.bin -STAGE1\n",
    "secured_BL1_V21.bin is generated.\n",
};
constexpr Block v21_bl2 = {
    "Usage: For Secured BL2 code generation\n",
    "#>Sealwright_V21 -v2.1 <source file> <destination file> <private key file> -STAGE2\n",
    "ex) #>Sealwright_V21 -v2.1 BL2.bin secured_BL2_V21.bin stage2Key_V21.prv -STAGE2\n",
    "secured_BL2_V21.bin is generated.\n",
};
constexpr Block v21_verify_bl1 = {
    "Usage: For Proof of Posession of Private Key\n",
    "#>Sealwright_V21 -v2.1 <secured_BL1_V21.bin> <eFuseData_V21.dat> -VERIFY\n",
    "ex) #>Sealwright_V21 -v2.1 secured_BL1_V21.bin eFuseData_V21.dat -VERIFY\n",
    "The Proof of Posession of Private Key is verified\n",
};
constexpr Block v21_verify_bl2 = {
    "Usage: For Secured BL2 code verification\n",
    "#>Sealwright_V21 -v2.1 <secured_BL2_V21.bin> <public key file> -STAGE2_VERIFY\n",
    "ex) #>Sealwright_V21 -v2.1 secured_BL1_V21.bin  stage2Key_V21.spk -STAGE2_VERIFY\n",
    "secured_BL2_V21.bin is verified.\n",
};
// The stage-2-only text names the stage-2 image where the full one names the stage-1 image, on purpose.
constexpr Block v21_client_verify_bl2 = {
    "Usage: For Secured BL2 code verification\n",
    "#>Sealwright_V21 -v2.1 <secured_BL2_V21.bin> <public key file> -STAGE2_VERIFY\n",
    "ex) #>Sealwright_V21 -v2.1 secured_BL2_V21.bin  stage2Key_V21.spk -STAGE2_VERIFY\n",
    "secured_BL2_V21.bin is verified.\n",
};
constexpr Block v11_root_keys = {
    "Usage: Vextral T.QRV's own Keypair generation\n",
    "#>Sealwright_V21 -v1.1 -KEYGEN\n",
    "ex) #>Sealwright_V21 -v1.1 -KEYGEN\n",
    "publicKeyInfo.dat, privateKey.dat and eFuseData.dat are generated.\n",
};
constexpr Block v11_stage2_keys = {
    "Usage: Customer's own Keypair generation\n",
    "#>Sealwright_V21 -v1.1 <key file> -STAGE2_KEYGEN\n",
    "ex) #>Sealwright_V21 -v1.1 stage2Key -STAGE2_KEYGEN\n",
    "stage2Key.spk and stage2Key.prv are generated.\n",
};
constexpr Block v11_bl1 = {
    "Usage: For Secured BL1 code generation\n",
    "#>Sealwright_V21 -v1.1 <source file> <destination file> -STAGE1\n",
    "ex) #>Sealwright_V21 -v1.1 BL1.bin secured_BL1_V11.bin -STAGE1\n",
    "secured_BL1_V11.bin is generated.\n",
};
constexpr Block v11_bl2 = {
    "Usage: For Secured BL2 code generation\n",
    "#>Sealwright_V21 -v1.1 <source file> <destination file> <private key file> -STAGE2\n",
    "ex) #>Sealwright_V21 -v1.1 BL2.bin secured_BL2.bin stage2Key.prv -STAGE2\n",
    "secured_BL2.bin is generated.\n",
};
constexpr Block v11_verify_bl1 = {
    "Usage: For Proof of Posession of Private Key\n",
    "#>Sealwright_V21 -v1.1 <secured_BL1_V11.bin> <eFuseData.dat> -VERIFY\n",
    "ex) #>Sealwright_V21 -v1.1 <secured_BL1_V11.bin> <eFuseData.dat> -VERIFY\n",
    "The Proof of Posession of Private Key is verified\n",
};
constexpr Block v11_verify_bl2 = {
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

void print_SB20_Usage() {
  print_blocks({v21_root_keys, v21_stage2_keys, v21_bl1, v21_bl2, v21_verify_bl1, v21_verify_bl2});
}

void print_SB10_Usage() {
  print_blocks({v11_root_keys, v11_stage2_keys, v11_bl1, v11_bl2, v11_verify_bl1, v11_verify_bl2});
}

void print_SB20_Usage_Stage2() {
  print_blocks({v21_stage2_keys, v21_bl2, v21_client_verify_bl2});
}

void print_SB10_Usage_Stage2() {
  print_blocks({v11_stage2_keys, v11_bl2, v11_verify_bl2});
}
