#pragma once

#include <string>
#include <string_view>

/// Text as it stands between the quotes of a JSON string (RFC 8259): quotes, backslashes and
/// control characters, also those that turn the direction of a text, become escapes, and each piece
/// that is no valid UTF-8 becomes one \ufffd. What comes out is also safe to show on a terminal.
std::string escape(std::string_view text);

/// A name as a person is shown it: as it is, or escaped and in quotes when it needs escapes.
std::string show_name(std::string_view name);
