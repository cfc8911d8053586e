/* Base64 (RFC 4648) without line breaks. */
#ifndef VXCALL_BASE64_H
#define VXCALL_BASE64_H

#include <cstdint>

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tools::vxcall {

std::string encodeBase64(std::span<const uint8_t> bytes);

/* Ignores white space; nothing for any other character outside the alphabet, wrong padding or stray bits. */
std::optional<std::vector<uint8_t>> decodeBase64(std::string_view text);

}  // namespace tools::vxcall

#endif
