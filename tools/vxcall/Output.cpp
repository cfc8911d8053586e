#include "Output.h"

#include <BQ/BQData.h>
#include <BQ/BQPropertyList.h>

#include "Json.h"

namespace tools::vxcall {

std::string formatJson(BQTypeRef value) {
  return jsonFromValue(value).dump(2) + "\n";
}

std::optional<std::string> formatPropertyList(BQTypeRef value) {
  if (value == nullptr) return "";
  auto data = BQAdopt(BQPropertyListCreateXMLData(value));
  if (!data) return std::nullopt;
  return std::string(reinterpret_cast<const char*>(BQDataGetBytePtr(data.get())),
                     static_cast<size_t>(BQDataGetLength(data.get())));
}

}  // namespace tools::vxcall
