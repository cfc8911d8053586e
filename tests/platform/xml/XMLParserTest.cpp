#include <gtest/gtest.h>

#include <map>
#include <regex>
#include <sstream>
#include <vector>

#include "support/PlatformValues.h"

namespace {

using namespace std::string_literals;
using namespace values;
using Tree = bq::Ref<const BQTree>;

std::vector<const BQTree*> childrenOf(const BQTree* tree) {
  std::vector<const BQTree*> children, visited;
  const auto visit = [](const void* child, void* list) {
    static_cast<std::vector<const BQTree*>*>(list)->push_back(static_cast<const BQTree*>(child));
  };
  BQTreeApplyFunctionToChildren(tree, visit, &visited);
  for (const BQTree* child = BQTreeGetFirstChild(tree); child != nullptr; child = BQTreeGetNextSibling(child))
    children.push_back(child);
  EXPECT_EQ(children, visited);
  EXPECT_EQ(BQTreeGetChildCount(tree), std::ssize(children));
  return children;
}

/* Elements as `name attribute=value(children)`, text in quotes, CDATA in brackets, references as written. */
std::string dump(const BQTree* tree) {
  static const std::map<int, const char*> marks = {{kBQXMLNodeTypeText, "\"\""},
                                                   {kBQXMLNodeTypeCDATASection, "[]"},
                                                   {kBQXMLNodeTypeEntityReference, "&;"}};
  std::string result;
  for (const BQTree* child : childrenOf(tree)) {
    const BQXMLNode* node = BQXMLTreeGetNode(child);
    const std::string string = text(BQXMLNodeGetString(node));
    const auto* info = static_cast<const BQXMLElementInfo*>(BQXMLNodeGetInfoPtr(node));
    if (!result.empty()) result += ',';
    if (info == nullptr) {
      const char* mark = marks.at(BQXMLNodeGetTypeCode(node));
      result += mark[0] + string + mark[1];
      continue;
    }
    EXPECT_EQ(BQXMLNodeGetTypeCode(node), kBQXMLNodeTypeElement);
    EXPECT_EQ(BQDictionaryGetCount(info->attributes), BQArrayGetCount(info->attributeOrder));
    result += string;
    for (BQIndex i = 0; i < BQArrayGetCount(info->attributeOrder); ++i) {
      BQTypeRef name = BQArrayGetValueAtIndex(info->attributeOrder, i);
      result += " " + describe(name) + "=" + describe(BQDictionaryGetValue(info->attributes, name));
    }
    result += "(" + dump(child) + ")";
  }
  return result;
}

/* With the error as `line, byte, status: description`. */
Tree parse(std::string_view bytes, std::string* message = nullptr) {
  auto data = own(BQDataCreate(bytes.data(), std::ssize(bytes)));
  const BQDictionary* problem = nullptr;
  auto tree = own(BQXMLTreeCreateFromDataWithError(data.get(), &problem));
  auto error = own(problem);
  EXPECT_NE(static_cast<bool>(tree), static_cast<bool>(error));
  auto part = [&](const BQString* key) { return BQDictionaryGetValue(error.get(), key); };
  if (message != nullptr)
    *message = text(own(BQStringCreateWithFormat(
        BQSTR("%@, %@, %@: %@"), part(kBQXMLTreeErrorLineNumber), part(kBQXMLTreeErrorLocation),
        part(kBQXMLTreeErrorStatusCode), part(kBQXMLTreeErrorDescription))));
  return tree;
}

/* The dump or the error. */
std::string outcome(std::string_view bytes) {
  std::string message;
  Tree tree = parse(bytes, &message);
  return tree ? dump(tree.get()) : message;
}

std::string repeated(std::string_view piece, size_t count) {
  std::string result;
  for (size_t i = 0; i < count; ++i) result += piece;
  return result;
}

/* A comment at the end leaves a plain document to expat. */
const std::string kUnusual = "<!---->";

/*
 * Documents, separated by " | ", and the dump or the error of each. \n, \r, \t and \xNN are escapes; what
 * follows "LE:" or "BE:" is in UTF-16.
 */
constexpr const char* kRows = R"(
# White space alone is dropped between tags and kept beside references.
<a>\n  <b> </b>\r\n\t<c/>\n<d>&#32;&#10;</d> <e> x </e>\n x<n:f.g-h/> y\r\n1\r2\n3</a>
  => a(b(),c(),d(),e(" x "),"\n x",n:f.g-h()," y\n1\n2\n3")
<a><b/> <![CDATA[x]]><c/> <![CDATA[ ]]> <d/> x <![CDATA[]]> y</a> => a(b(),[x],c(),[ ],d()," x ",[]," y")
<a><![CDATA[]]> &e; <![CDATA[<&]]]><![CDATA[\r\n]]>2<b/> <!-- --> &e;</a>
  => a([]," ",&e;," ",[<&]],[\n],"2",b(),"  ",&e;)
# Comments, instructions and the document type are dropped.
<!-- 1 --><!DOCTYPE a><?p q?><a>x<!-- 2 -->y<?p?>z<b/> <!-- --> <?p?></a> => a("xyz",b())
<!DOCTYPE a [<!ATTLIST a given CDATA 'by the type'>]><a own='1'><a/></a> => a own=1(a())
# Characters are decoded once.
<a>&lt;&amp;&gt;&quot;&apos;x&#65;&#x20AC;&#x1F600;&#13;y&amp;amp;&#38;lt;\xC2\xA0</a>
  => a("<&>"'xA€😀\ry&amp;&lt;\xC2\xA0")
# Other references are never expanded.
<a b='&lt;'>x&e;y</a> | <?xml version="1.0" standalone = "yes" ?><a b='&lt;'>x&e;y</a> => a b=<("x",&e;,"y")
<!DOCTYPE a [<!ENTITY e 'E'>]><a>x&e;y&f;</a> | <!DOCTYPE a SYSTEM 'file:///nowhere'><a>x&e;y&f;</a>
  | <?xml version='1.0' standalone='yes'?><!DOCTYPE a [<!ENTITY e 'E'>]><a>x&e;y&f;</a>
  | <!DOCTYPE a SYSTEM 'file:///nowhere' [<!ENTITY e 'E'>]><a>x&e;y&f;</a>
  | <!DOCTYPE a [<!ENTITY e SYSTEM 'file:///etc/passwd'>]><a>x&e;y&f;</a>
  | <!DOCTYPE a [<!ENTITY % p SYSTEM 'file:///nowhere'>%p;<!ENTITY e 'E'>]><a>x&e;y&f;</a> => a("x",&e;,"y",&f;)
<a b = '"&e;&#x41;&#66;&apos;' \n c="'&e;&e;" d='&lt;&#65;&amp;amp;'/> => a b="&e;AB' c='&e;&e; d=<A&amp;()
<!DOCTYPE a [<!ENTITY e 'E'>]><a b='&e;\r\n\t&#10;é&#x20AC;&#x1F600;'/>
  | <?xml version='1.0'?>\xEF\xBB\xBF<a b='&e;\r\n\t&#10;&#xE9;€&#x1F600;'/>
  | \xEF\xBB\xBF<?xml version='1.0' standalone='yes'?><a b='&e;\r\n\t&#10;é&#x20AC;😀'/>
  | <?xml version='1.0' encoding='latin1'?><a b='&e;\r\n\t&#10;\xE9&#x20AC;&#x1F600;'/> => a b=&e;  \né€😀()
# Attributes keep their order.
<a z='1' y=' 2\n3\t' x='3'><b c='d'/><b c='d'/><b d='c'/><b cd=''/></a>
  => a z=1 y= 2 3  x=3(b c=d(),b c=d(),b d=c(),b cd=())
# Marks, the first bytes and the declaration tell the encoding.
\xEF\xBB\xBF<a>å</a> | \xEF\xBB\xBF<?xml version='1.0'?><a>å</a> | <?xml version='1.0'?>\r\n\xEF\xBB\xBF<a>å</a>
  | <?XML VERSION='1.0' ENCODING='ISO-8859-1'?><a>\xE5</a> | <?xml version='1.0' encoding='utf8'?><a>å</a> => a("å")
<?xml version='1.0' encoding="windows-1252"?><a>\x80</a> => a("€")
\xFE\xFFBE:<a>x&e;</a> | LE:<a>x&e;</a> | \xFF\xFELE:<?xml version='1.0' encoding='UTF-8'?><a>x&e;</a>
  | BE:<?xml version='1.0' encoding='UTF-16'?><a>x&e;</a>
  | BE:\xEF\xBB\xBF<?xml version='1.0'?>\r\n\xEF\xBB\xBF<a>x&e;</a> => a("x",&e;)
# An error has its line, byte and code.
 => 1, 0, 3: no element found
<a>\n<b></a> => 2, 9, 7: mismatched tag
<a/><b/> => 1, 4, 9: junk after document element
<a b='1'\n b='2'/> => 2, 10, 8: duplicate attribute
<a>&#0;</a> => 1, 3, 14: reference to invalid character number
<a>\xEF\xBF\xBF</a> | <a>\x01</a> => 1, 3, 4: not well-formed (invalid token)
<?xml version='1.0'?>\n\xEF\xBB\xBF<a></b> => 2, 30, 7: mismatched tag
<?xml version='1.0' standalone='yes'?>\n<a></b> => 2, 44, 7: mismatched tag
\xEF\xBB\xBF<a></b> => 1, 8, 7: mismatched tag
<?xml Version='1.0'?><a/> => 1, 6, 30: XML declaration not well-formed
<?xml version='1.0' version='1.0'?><a/> | <?xml version='1.0' ENCODING='utf-8'?><a/>
  | <?XML VERSION='1.0' Standalone='yes'?><a/> => 1, 20, 30: XML declaration not well-formed
\x20<?xml version='1.0'?><a/> => 1, 1, 17: XML or text declaration not at start of entity
\xEF\xBB\xBF<a>\n\xE5</a> => 2, 7, 1002: not well-formed (NUL or malformed UTF-8)
<a>\xE5</a> | <a>\xED\xA0\x80</a> | <a>\x00</a> => 1, 3, 1002: not well-formed (NUL or malformed UTF-8)
# U+2600 has the byte of an ampersand in UTF-16.
\x20LE:<a b='☀'/> => 1, 2, 1002: not well-formed (NUL or malformed UTF-8)
\xEF\xBB\xBFLE:<a b='☀'/> => 1, 4, 1002: not well-formed (NUL or malformed UTF-8)
\xEF\xBB\xBF\xEF\xBB\xBF<a/> => 1, 0, 1002: The document begins with two byte-order marks
<?xml version='1.0' encoding='ascii'?><a>\xE5</a> => 1, 0, 1002: The bytes are not text in the encoding "ascii"
\xFE\xFF\xD8BE:<a/> | \xFE\xFF<ab/> => 1, 0, 1002: The bytes are not text in the encoding "UTF-16"
<?xml version='1.0' encoding='utf-16'?><a>xx</a> => 1, 0, 1002: The document is not in the encoding "utf-16"
<?xml version='1.0' encoding='\xFF%s%n'?><a/> => 1, 0, 1002: The encoding "\xEF\xBF\xBD%s%n" is not known
)";

std::string unescaped(std::string text) {
  for (size_t i = 0; (i = text.find('\\', i)) != std::string::npos; ++i) {
    const size_t letter = "nrtx"s.find(text[i + 1]);
    const int byte = letter == 3 ? std::stoi(text.substr(i + 2, 2), nullptr, 16) : "\n\r\t"[letter];
    text.replace(i, letter == 3 ? 4 : 2, 1, static_cast<char>(byte));
  }
  const size_t mark = std::min(text.find("LE:"), text.find("BE:"));
  if (mark == std::string::npos) return text;
  const auto encoding = text[mark] == 'L' ? kBQStringEncodingUTF16LE : kBQStringEncodingUTF16BE;
  const auto rest = string(text.substr(mark + 3));
  return text.substr(0, mark) +
         bytes(own(BQStringCreateExternalRepresentation(rest.get(), encoding, 0)).get());
}

TEST(XMLParser, AnswersEachDocumentOfTheTable) {
  const std::regex separator(" [|] ");
  std::istringstream rows(std::regex_replace(kRows, std::regex("\n  "), " "));
  for (std::string row; std::getline(rows, row);) {
    const size_t arrow = row.find(" => ");
    if (row.starts_with('#') || arrow == std::string::npos) continue;
    const std::string documents = row.substr(0, arrow), expected = unescaped(row.substr(arrow + 4));
    std::sregex_token_iterator piece(documents.begin(), documents.end(), separator, -1), end;
    for (; piece != end; ++piece) {
      const std::string document = unescaped(*piece);
      const bool isPlain = expected[0] == 'a' && document.find('\0') == std::string::npos;
      EXPECT_EQ(outcome(document), expected) << *piece;
      EXPECT_EQ(outcome(document + (isPlain ? kUnusual : "")), expected) << *piece;
    }
  }
}

TEST(XMLParser, RefusesDeepNesting) {
  const std::string deep = repeated("<a>", 512), ends = repeated("</a>", 511);
  EXPECT_TRUE(parse(deep + kUnusual + ends + "</a>"));
  EXPECT_TRUE(parse(deep + ends + repeated("<a>", 511) + kUnusual + ends + "</a>"));
  for (const std::string& document :
       {deep + kUnusual + "<a></a>" + ends, deep + "<a/>", repeated(deep, 1000)})
    EXPECT_TRUE(outcome("\n" + document).ends_with(", 1001: elements nested deeper than 512 levels"));
  EXPECT_TRUE(outcome("\n" + deep + "<a/>").starts_with("2, 1537, "));
}

/* A document whose entities each refer to the one before. */
std::string entityChain(size_t count, size_t references, const std::string& document) {
  std::string result = "<!DOCTYPE a [<!ENTITY e0 'xxxxxxxxxx'>";
  for (size_t i = 1; i < count; ++i)
    result += "<!ENTITY e" + std::to_string(i) + " '" +
              repeated("&e" + std::to_string(i - 1) + ";", references) + "'>";
  return result + document;
}

TEST(XMLParser, SurvivesEntityBombs) {
  const std::string loop = "<!DOCTYPE a [<!ENTITY e '&f;'><!ENTITY f '&e;'>]>", large(100000, 'x');
  auto declaring = [](size_t count) {
    std::string list = "<!DOCTYPE a [<!ATTLIST a";
    for (size_t i = 0; i < count; ++i) list += " n" + std::to_string(i) + " CDATA 'v'";
    return list + ">]><a>" + repeated("<a/>", 100000) + "</a>";
  };
  auto numbered = [](size_t count, const std::string& before, const std::string& after) {
    std::string text = "<a";
    for (size_t i = 0; i < count; ++i) text += before + std::to_string(i) + after;
    return text;
  };
  for (const std::string& document :
       {numbered(4096, " n", "='v'") + "/>", "<a>" + repeated("&e;", 16384) + "</a>",
        entityChain(30, 10, "]><a>&e29;</a>"), entityChain(65, 1, "]><a b='&e64;'/>"),
        entityChain(65, 1, "<!ATTLIST a b CDATA '&e64;'>]><a/>"), loop + "<a>&e;</a>", declaring(64)})
    EXPECT_TRUE(parse(document)) << document;
  const std::pair<std::string, std::vector<std::string>> rows[] = {
      {"limit on input amplification factor (from DTD and entities) breached",
       {entityChain(30, 10, "]><a b='&e29;'/>"), entityChain(30, 10, "<!ATTLIST a b CDATA '&e29;'>]><a/>"),
        "<!DOCTYPE a [<!ENTITY e '" + large + "'>]><a>" + repeated("<a b='&e;'/>", 1000)}},
      {"too many entities that refer to others",
       {entityChain(66, 1, "]><a/>"), entityChain(100000, 1, "<!ATTLIST a b CDATA '&e64;'>]><a/>")}},
      {"too many attributes in one tag", {numbered(4097, " n", "='v'") + "/>"}},
      {"too many different names",
       {numbered(60000, "><n", "/") + "></a>", numbered(60000, "><a n", "='x'/") + "/>"}},
      {"too many references to entities", {"<a>" + repeated("&e;", 20000) + "</a>"}},
      {"recursive entity reference", {loop + "<a b='&e;'/>"}},
      {"too many attributes declared by the document type", {declaring(65)}},
      {"The encoding \"" + large.substr(0, 80) + "\" is not known",
       {"<?xml version='1.0' encoding='" + large + "'?><a/>"}},
  };
  for (const auto& [problem, documents] : rows)
    for (const std::string& document : documents) EXPECT_TRUE(outcome(document).ends_with(": " + problem));
}

TEST(XMLParser, SurvivesManyAndLongNames) {
  const std::string longName(1 << 20, 'n');
  std::string document = "<a " + longName + "='" + longName + "'",
              attributes = "a " + longName + "=" + longName, tags = ">x&" + longName + ";",
              children = "(\"x\",&" + longName + ";";
  for (int i = 0; i < 20000; ++i) {
    const std::string number = std::to_string(i);
    if (i < 4000) document += " n" + number + "='v'", attributes += " n" + number + "=v";
    tags += "<s" + number + "e/>", children += ",s" + number + "e()";
  }
  EXPECT_TRUE(outcome(document + tags + "</a>") == attributes + children + ")");
  EXPECT_EQ(outcome("<b><a/><b/></b>"), "b(a(),b())") << "nothing is left of the names";
}

TEST(XMLTree, ElementsOutliveTheDocumentAndDescribeThemselves) {
  Tree tree = parse("<a b='c'>some text<![CDATA[x]]>&e;<d/></a>");
  EXPECT_EQ(describe(tree.get()), "<BQTree document>");
  const auto root = Tree::retain(BQTreeGetFirstChild(tree.get()));
  tree = nullptr;
  std::string shown = describe(root.get());
  for (const BQTree* child : childrenOf(root.get())) shown += describe(BQXMLTreeGetNode(child));
  EXPECT_EQ(shown,
            "<BQTree element a><BQXMLNode text><BQXMLNode CDATA section><BQXMLNode entity reference e>"
            "<BQXMLNode element d>");
}

}  // namespace
