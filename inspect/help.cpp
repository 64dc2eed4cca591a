#include "inspect/options.h"

namespace sealwright {

// clang-format off
const char help_text[] =
    "Usage: Sealwright_inspect [--json] FILE...\n"
    "       Sealwright_inspect [--json] --boot [--code FILE] EFUSE_DATA BL1 [BL2]\n"
    "       Sealwright_inspect --pem FILE\n"
    "       Sealwright_inspect --help | --version\n"
    "\n"
    "Says what files of Sealwright are, which of them belong together, and whether a\n"
    "fused device would boot an image. It writes no file and shows no secret.\n"
    "\n"
    "  FILE...   what each file is, what it holds, whether it is sound, and what it goes\n"
    "            with of the others: eFuse data, public-key and private-key files, secured\n"
    "            BL1, and secured BL2 where a key named with it signed it. A file that\n"
    "            belongs to none of the files it could belong to is not sound\n"
    "  --boot    whether a device with these fuses boots BL1 and, when it is given, BL2:\n"
    "            does the root key in BL1 go with the fuses, did it sign BL1, did the\n"
    "            stage-2 key in BL1 sign BL2, and are both keys of the format; and the\n"
    "            SHA-1 of the first-stage code as the device runs it\n"
    "  --code FILE\n"
    "            the first-stage code that the device should run: it must be this file,\n"
    "            byte for byte\n"
    "  --pem     the public key in a key file, or the root key and the stage-2 key in a\n"
    "            secured BL1, in the form that other tools read\n"
    "  --json    the same as JSON, for programs and logs\n"
    "  --        what follows is a file, also when it starts with a dash\n"
    "\n"
    "Exit status: 0 all sound, or boots; 1 some file unsound or not recognised, or would\n"
    "not boot; 2 wrong usage, a file that cannot be read, or output that cannot be written.\n"
    "\n"
    "Examples:\n"
    "  Sealwright_inspect *.dat *.spk *.prv *.bin\n"
    "  Sealwright_inspect --boot eFuseData_V21.dat secured_BL1_V21.bin secured_BL2_V21.bin\n"
    "  Sealwright_inspect --boot --code BL1.bin eFuseData_V21.dat secured_BL1_V21.bin\n"
    "  Sealwright_inspect --pem stage2Key_V21.spk | openssl pkey -pubin -noout -text\n"
    "  Sealwright_inspect --json secured_BL1_V21.bin | jq -r '.[0].stage2_key.sha1'\n";
// clang-format on

}  // namespace sealwright
