#pragma once

#include "crypto/key_items.h"
#include "crypto/rsa_key.h"

namespace sealwright {

/// Whether the numbers of a complete private key belong together and work: n = p q; d, dP and dQ
/// undo e; qInv inverts q; and a fixed number raised to d comes back raised to e. Nothing is drawn
/// for it. For the CRT layout, what signs with all of the numbers, p is the larger prime besides
/// and the same number raised by the Chinese remainder theorem comes out the same: the operation
/// fails at times where p is the smaller one.
[[nodiscard]] bool rsa_key_agrees(const ZEB_RSA_PRIVATE_KEY& key, KeyItemLayout layout);

}  // namespace sealwright
