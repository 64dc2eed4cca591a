#include "util/build_info.h"

#include <cstring>
#include <ctime>

void mk_BL_Info(std::uint8_t* record) {
  BuildInfo info = {};
  tzset();
  info.build_time = static_cast<std::uint32_t>(std::time(nullptr));
  constexpr char tag[sizeof info.signer_tag] = "Vextral T.QRV Stage2Key";
  std::memcpy(info.signer_tag, tag, sizeof tag);
  std::memcpy(record, &info, sizeof info);
}
