/* The tree parser: documents as they stand, or behind a declaration of an encoding. */
#include "Fuzz.h"

#include "diag/TreeDump.h"

namespace {

using namespace fuzz;

/*
 * The first byte of an input is the number of a row, whose declaration is put in front of the rest; 0
 * and what is beyond the rows puts none.
 */
constexpr const char* kEncodings[] = {
    nullptr,           "UTF-8",        "macintosh",    "x-mac-cyrillic", "x-mac-centraleurroman",
    "x-mac-ukrainian", "UTF-16",       "ISO-8859-1",   "ISO-8859-2",     "ISO-8859-3",
    "ISO-8859-4",      "ISO-8859-5",   "ISO-8859-6",   "ISO-8859-7",     "ISO-8859-8",
    "ISO-8859-9",      "ISO-8859-10",  "ISO-8859-11",  "ISO-8859-13",    "ISO-8859-14",
    "ISO-8859-15",     "ISO-8859-16",  "IBM437",       "IBM737",         "IBM775",
    "IBM850",          "IBM851",       "IBM852",       "IBM855",         "IBM857",
    "IBM00858",        "IBM860",       "IBM861",       "IBM862",         "IBM863",
    "IBM864",          "IBM865",       "IBM866",       "windows-874",    "IBM869",
    "Windows-31J",     "GBK",          "windows-949",  "windows-1252",   "windows-1250",
    "windows-1251",    "windows-1253", "windows-1254", "windows-1255",   "windows-1256",
    "windows-1257",    "windows-1258", "US-ASCII",     "GB18030",        "ISO-2022-JP",
    "ISO-2022-JP-2",   "EUC-JP",       "GB2312",       "EUC-TW",         "EUC-KR",
    "Shift_JIS",       "KOI8-R",       "Big5",         "Big5-HKSCS",     "VISCII",
    "KOI8-U",          "TIS-620",      "TCVN",         "hp-roman8",      "DEC-MCS",
    "PTCP154",         "KZ-1048",      "IBM037",       "IBM273",         "IBM277",
    "IBM278",          "IBM280",       "IBM284",       "IBM285",         "IBM297",
    "IBM500",          "IBM870",       "IBM871",       "IBM1026",        "IBM1047",
    "IBM01140",        "IBM01148",     "UTF-32",       "UTF-16BE",       "UTF-16LE",
    "UTF-32BE",        "UTF-32LE",     "unheard-of",
};

constexpr size_t kLargestDump = 2048;

std::string declarationFor(size_t row) {
  const char* name = row < std::size(kEncodings) ? kEncodings[row] : nullptr;
  if (name == nullptr) return {};
  auto nameString = makeString(name);
  auto text = own(BQStringCreateWithFormat(BQSTR("<?xml version='1.0' encoding='%@'?>"), nameString.get()));
  BQStringEncoding encoding = BQStringConvertIANACharSetNameToEncoding(nameString.get());
  if (encoding == kBQStringEncodingInvalidId) encoding = kBQStringEncodingASCII;
  auto declaration = own(BQStringCreateExternalRepresentation(text.get(), encoding, 0));
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
    switch (character) {
      case '&':
        out += "&amp;";
        break;
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      case '"':
        out += "&quot;";
        break;
      case '\r':
        out += "&#13;";
        break;
      case '\n':
        out += "&#10;";
        break;
      case '\t':
        out += "&#9;";
        break;
      default:
        out += character;
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

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  ByteReader input(bytes, size);
  std::string document = declarationFor(input.byte());
  document += input.rest();

  auto tree = parse(document);
  auto again = parse(document);
  check((tree == nullptr) == (again == nullptr));
  if (tree == nullptr) return 0;
  std::string text = textOfDocument(tree.get());
  check(text == textOfDocument(again.get()));
  auto second = parse(text);
  check(second != nullptr && textOfDocument(second.get()) == text);
  if (text.size() <= kLargestDump) vx::dumpXMLTree(tree.get(), 0);
  return 0;
}
