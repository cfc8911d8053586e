/* The tree parser: documents as they stand, or behind a declaration of an encoding. */
#include "Fuzz.h"

#include "diag/TreeDump.h"
#include "platform/text/EncodingTable.h"

namespace {

using namespace fuzz;

constexpr size_t kLargestDump = 2048;

/*
 * The first byte of an input counts the known encodings from 1; a declaration of that one is put in
 * front of the rest. 0 and what is beyond them puts none.
 */
std::string declarationFor(size_t number) {
  const auto encodings = bq::allEncodings();
  if (number == 0 || number > encodings.size()) return {};
  const bq::EncodingRecord& encoding = encodings[number - 1];
  auto text =
      own(BQStringCreateWithFormat(BQSTR("<?xml version='1.0' encoding='%s'?>"), encoding.name.bytes));
  auto declaration = own(BQStringCreateExternalRepresentation(text.get(), encoding.number, 0));
  check(declaration != nullptr);
  return std::string(viewOf(declaration.get()));
}

Owned<const BQTree> parse(std::string_view document) {
  const BQDictionary* error = nullptr;
  auto tree = own(BQXMLTreeCreateFromDataWithError(makeData(document).get(), &error));
  auto ownedError = own(error);
  check((tree == nullptr) == (error != nullptr));
  return tree;
}

void appendEscaped(std::string& out, std::string_view text) {
  for (char character : text) {
    if (std::string_view("&<>\"\r\n\t").find(character) == std::string_view::npos) {
      out += character;
    } else {
      out += "&#" + std::to_string(character) + ";";
    }
  }
}

void write(std::string& out, const BQTree* tree);

void writeElement(std::string& out, const BQTree* tree, std::string_view name) {
  auto* info = static_cast<const BQXMLElementInfo*>(BQXMLNodeGetInfoPtr(BQXMLTreeGetNode(tree)));
  (out += '<') += name;
  for (BQIndex i = 0; i < BQArrayGetCount(info->attributeOrder); ++i) {
    auto* attribute = static_cast<const BQString*>(BQArrayGetValueAtIndex(info->attributeOrder, i));
    auto* value = static_cast<const BQString*>(BQDictionaryGetValue(info->attributes, attribute));
    check(value != nullptr);
    ((out += ' ') += textOf(attribute)) += "=\"";
    appendEscaped(out, textOf(value));
    out += '"';
  }
  out += '>';
  write(out, tree);
  ((out += "</") += name) += '>';
}

/* Writes the children of a position. */
void write(std::string& out, const BQTree* tree) {
  for (auto* child = BQTreeGetFirstChild(tree); child != nullptr; child = BQTreeGetNextSibling(child)) {
    const BQXMLNode* node = BQXMLTreeGetNode(child);
    std::string_view text = textOf(BQXMLNodeGetString(node));
    switch (BQXMLNodeGetTypeCode(node)) {
      case kBQXMLNodeTypeElement:
        writeElement(out, child, text);
        break;
      case kBQXMLNodeTypeText:
        appendEscaped(out, text);
        break;
      case kBQXMLNodeTypeCDATASection:
        ((out += "<![CDATA[") += text) += "]]>";
        break;
      case kBQXMLNodeTypeEntityReference:
        ((out += '&') += text) += ';';
        break;
      default:
        check(false);
    }
  }
}

std::string textOfDocument(const BQTree* tree) {
  std::string text;
  write(text, tree);
  return text;
}

/*
 * A comment, which leaves a plain document to the real parser. None where it might not be one: in UTF-16,
 * UTF-32 and EBCDIC.
 */
std::string unusualEnd(std::string_view document) {
  bool isASCII =
      document.find('\0') == std::string_view::npos &&
      (document.empty() || std::string_view("\xFE\xFF\x4C").find(document[0]) == std::string_view::npos);
  return isASCII ? "<!---->" : "";
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  ByteReader input(bytes, size);
  std::string document = declarationFor(input.byte());
  document += input.rest();

  auto tree = parse(document);
  auto again = parse(document + unusualEnd(document));
  check((tree == nullptr) == (again == nullptr));
  if (tree == nullptr) return 0;
  std::string text = textOfDocument(tree.get());
  check(text == textOfDocument(again.get()));
  auto second = parse(text);
  check(second != nullptr && textOfDocument(second.get()) == text);
  if (text.size() <= kLargestDump) vx::dumpXMLTree(tree.get(), 0);
  return 0;
}
