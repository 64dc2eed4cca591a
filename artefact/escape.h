#pragma once

#include <string>
#include <string_view>

namespace sealwright {

/// Text as it stands between the quotes of a JSON string (RFC 8259): quotes, backslashes and
/// characters that cannot be seen become escapes (beyond U+FFFF two of them, a surrogate pair), and
/// each piece that is no valid UTF-8 becomes one \ufffd. What comes out is also safe to show on a
/// terminal.
std::string escape(std::string_view text);

/// A name as a person is shown it: as it is, or escaped and in quotes when it needs escapes.
std::string show_name(std::string_view name);

}  // namespace sealwright
