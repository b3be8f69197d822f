// Bytes as text, as a page carries them.
#pragma once

#include <string>
#include <string_view>

namespace taskfile {

std::string Base64Of(std::string_view bytes);
// Appends the bytes of a text that Base64Of() gave. False: it is no such text.
bool FromBase64(std::string_view text, std::string& bytes);

}  // namespace taskfile
