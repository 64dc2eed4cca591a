#include "seal/options.h"

namespace sealwright {

namespace {

// clang-format off
constexpr char general_help[] =
    "Usage: Sealwright_seal root-key   [--scheme 2.1|1.1] DIR\n"
    "       Sealwright_seal stage2-key [--scheme 2.1|1.1] NAME\n"
    "       Sealwright_seal bl1 [--build-info] --root DIR --stage2-key FILE.spk BL1 OUT\n"
    "       Sealwright_seal bl2 --stage2-key FILE.spk [--private-key FILE.prv] BL2 OUT\n"
    "       Sealwright_seal export-key FILE OUT.pem\n"
    "       Sealwright_seal --help | --version\n"
    "\n"
    "Makes the keys and images of Sealwright_V21 and proves them before they appear: an\n"
    "output is whole and right, or it is not there. Keys are never replaced.\n"
    "\n"
    "  root-key    a new folder DIR with a set of root keys\n"
    "  stage2-key  a stage-2 key pair, NAME_V21.spk and NAME_V21.prv (1.1: NAME.spk, NAME.prv)\n"
    "  bl1         seals a first-stage image for devices with the root key in DIR\n"
    "  bl2         signs a second-stage image\n"
    "  export-key  a private key in the form that tokens and vaults import\n"
    "\n"
    "  --json      one JSON object on one line, for programs and logs\n"
    "  --help      after a command: more about it, and about keys that are elsewhere\n"
    "\n"
    "Exit status: 0 made and proved; 1 refused: something does not fit or exists already;\n"
    "2 wrong usage, or a file that cannot be read or written.\n";
constexpr char root_key_help[] =
    "Usage: Sealwright_seal root-key [--scheme 2.1|1.1] [--json] DIR\n"
    "\n"
    "Makes a root key, public and private half, and the eFuse data that ties devices to\n"
    "it. The new folder DIR (mode 0700) gets the three files under their fixed names, all\n"
    "at once. DIR may be there already when it is empty.\n"
    "\n"
    "  --scheme  2.1 (RSA-2048, the default) or 1.1 (RSA-1024, older devices)\n"
    "\n"
    "Fused keys cannot be replaced: back DIR up before a device is fused.\n"
    "\n"
    "Example:\n"
    "  Sealwright_seal root-key keys\n";
constexpr char stage2_key_help[] =
    "Usage: Sealwright_seal stage2-key [--scheme 2.1|1.1] [--json] NAME\n"
    "\n"
    "Makes a stage-2 key pair: NAME_V21.spk, which BL1 is sealed with, and NAME_V21.prv,\n"
    "which signs BL2 (scheme 1.1: NAME.spk and NAME.prv). NAME may be a path.\n"
    "\n"
    "  --scheme  2.1 (RSA-2048, the default) or 1.1 (RSA-1024, older devices)\n"
    "\n"
    "Example:\n"
    "  Sealwright_seal stage2-key boot/release\n";
constexpr char bl1_help[] =
    "Usage: Sealwright_seal bl1 [--build-info] [--json] --root DIR --stage2-key FILE.spk\n"
    "                           BL1 OUT\n"
    "\n"
    "Seals a first-stage image: devices fused with the eFuse data in DIR boot OUT, and it\n"
    "vouches for the stage-2 key. Everything is checked before it is signed, and the\n"
    "sealed image is checked as the device does and opened again before OUT appears.\n"
    "\n"
    "  --root        the folder of the root keys, under their fixed names\n"
    "  --stage2-key  the public half of the stage-2 key; it says which scheme is used\n"
    "  --build-info  seal the time and a tag in after the code (scheme 2.1)\n"
    "\n"
    "Scheme 2.1 takes whole blocks of 16 bytes.\n"
    "\n"
    "Example:\n"
    "  Sealwright_seal bl1 --root keys --stage2-key release_V21.spk BL1.bin secured_BL1.bin\n";
constexpr char bl2_help[] =
    "Usage: Sealwright_seal bl2 --stage2-key FILE.spk [--private-key FILE.prv] [--json]\n"
    "                           BL2 OUT\n"
    "\n"
    "Signs a second-stage image with the private half of the stage-2 key that BL1 vouches\n"
    "for. The signature is checked before OUT appears.\n"
    "\n"
    "  --stage2-key   the public half; it says which scheme is used\n"
    "  --private-key  the private half, when it is not FILE.prv beside FILE.spk\n"
    "\n"
    "Example:\n"
    "  Sealwright_seal bl2 --stage2-key release_V21.spk BL2.bin secured_BL2.bin\n";
constexpr char export_key_help[] =
    "Usage: Sealwright_seal export-key [--json] FILE OUT.pem\n"
    "\n"
    "Writes the private key in FILE, root or stage 2, as unencrypted PKCS #8 (mode 0600),\n"
    "for import into a token or a vault. OUT.pem is a new file, or - for standard output.\n"
    "\n"
    "Example, with a pass phrase and no plain file on the disk:\n"
    "  Sealwright_seal export-key keys/privateKey_V21.dat - | openssl pkcs8 -topk8 -out root.pem\n";
constexpr char elsewhere_help[] =
    "\n"
    "A private key that is not here, but in a token, on a signing host or in another room:\n"
    "  -- PROGRAM [ARGUMENT...]  PROGRAM signs: it gets a SHA-1 digest of 20 bytes on standard\n"
    "                            input and writes the signature (RSASSA-PSS, SHA-1, MGF1-SHA-1,\n"
    "                            salt of 20 bytes; big-endian) to standard output, no more\n"
    "  --prepare                 writes what is to be made as OUT.pending and the digest as\n"
    "                            OUT.digest, beside OUT (or the public-key file)\n"
    "  --signature FILE          the same command later: FILE is the signature of that digest\n"
    "  --padded                  hands out the encoded block instead (256 or 128 bytes, as\n"
    "                            OUT.block), for signers that do the bare RSA operation\n";
constexpr char public_key_help[] =
    "  --public-key FILE         the key, as PEM \"PUBLIC KEY\" or \"RSA PUBLIC KEY\" or DER;\n"
    "                            no private-key file is made\n";
// clang-format on

}  // namespace

std::string help_text(Verb verb) {
  constexpr const char* texts[] = {general_help, root_key_help, stage2_key_help,
                                   bl1_help,     bl2_help,      export_key_help};
  std::string text = texts[static_cast<std::size_t>(verb)];
  const bool makes_key = verb == Verb::root_key || verb == Verb::stage2_key;
  if (makes_key || verb == Verb::bl1 || verb == Verb::bl2) text += elsewhere_help;
  if (makes_key) text += public_key_help;
  return text;
}

}  // namespace sealwright
