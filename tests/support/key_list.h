#pragma once

#include "crypto/key_items.h"
#include "tests/support/vectors.h"

/// The key list of a key: n, e, d, p, q, dP, dQ, qInv. Version 1.1 leaves e out.
inline Bytes make_key_list(const ZEB_RSA_PRIVATE_KEY& key, bool with_e) {
  Bytes list(2048);
  std::uint32_t length = 0;
  append_key_item(list.data(), length, key.n, key.nWords);
  if (with_e) append_key_item(list.data(), length, key.e, key.eWords);
  append_key_item(list.data(), length, key.d, key.dWords);
  append_key_item(list.data(), length, key.p, key.pWords);
  append_key_item(list.data(), length, key.q, key.qWords);
  append_key_item(list.data(), length, key.dP, key.dPWords);
  append_key_item(list.data(), length, key.dQ, key.dQWords);
  append_key_item(list.data(), length, key.qInv, key.qInvWords);
  list.resize(length);
  return list;
}
