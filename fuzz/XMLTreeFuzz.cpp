/* Documents, which both readers read alike, and whose trees survive writing. */
#include "Fuzz.h"

#include "diag/TreeDump.h"

namespace {

using namespace fuzz;

constexpr size_t kLargestDump = 2048;

Owned<const BQTree> parse(std::string_view document) {
  return resultOf<BQDictionary>(BQXMLTreeCreateFromDataWithError, makeData(document).get());
}

std::string escaped(std::string_view text) {
  std::string result;
  for (char character : text) {
    bool isSpecial = std::string_view("&<>\"\r\n\t").find(character) != std::string_view::npos;
    result += isSpecial ? "&#" + std::to_string(character) + ";" : std::string(1, character);
  }
  return result;
}

std::string attributesOf(const BQXMLNode* element) {
  std::string result;
  auto* info = static_cast<const BQXMLElementInfo*>(BQXMLNodeGetInfoPtr(element));
  for (BQIndex i = 0; i < BQArrayGetCount(info->attributeOrder); ++i) {
    auto* name = static_cast<const BQString*>(BQArrayGetValueAtIndex(info->attributeOrder, i));
    auto* value = static_cast<const BQString*>(BQDictionaryGetValue(info->attributes, name));
    check(value != nullptr);
    ((result += ' ') += textOf(name)) += "=\"" + escaped(textOf(value)) + '"';
  }
  return result;
}

/* The document below a position. */
std::string write(const BQTree* tree) {
  std::string result;
  for (auto* child = BQTreeGetFirstChild(tree); child != nullptr; child = BQTreeGetNextSibling(child)) {
    const BQXMLNode* node = BQXMLTreeGetNode(child);
    const std::string text(textOf(BQXMLNodeGetString(node)));
    const BQXMLNodeTypeCode type = BQXMLNodeGetTypeCode(node);
    if (type == kBQXMLNodeTypeElement) {
      result += "<" + text + attributesOf(node) + ">" + write(child) + "</" + text + ">";
    } else if (type == kBQXMLNodeTypeText) {
      result += escaped(text);
    } else {
      const bool isSection = type == kBQXMLNodeTypeCDATASection;
      check(isSection || type == kBQXMLNodeTypeEntityReference);
      result += isSection ? "<![CDATA[" + text + "]]>" : "&" + text + ";";
    }
  }
  return result;
}

/*
 * A comment, which makes the fast reader leave a plain document to expat. None if the document may be in
 * UTF-16, UTF-32 or EBCDIC, where these bytes are not a comment.
 */
std::string unusualEnd(std::string_view document) {
  bool isASCII =
      document.find('\0') == std::string_view::npos &&
      (document.empty() || std::string_view("\xFE\xFF\x4C").find(document[0]) == std::string_view::npos);
  return isASCII ? "<!---->" : "";
}

}  // namespace

void fuzz::run(ByteReader input) {
  std::string document(input.rest());
  auto tree = parse(document);
  auto again = parse(document + unusualEnd(document));
  check((tree == nullptr) == (again == nullptr));
  if (tree == nullptr) return;
  std::string text = write(tree.get());
  check(text == write(again.get()));
  auto second = parse(text);
  check(second != nullptr && write(second.get()) == text);
  if (text.size() <= kLargestDump) vx::dumpXMLTree(tree.get(), 0);
}
