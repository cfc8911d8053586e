#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "platform/xml/StartTag.h"
#include "support/PlatformValues.h"

namespace {

using namespace std::string_literals;
using namespace values;
using bq::Ref;

std::string dumpAttributes(const BQXMLElementInfo* info) {
  std::string result;
  for (BQIndex i = 0; i < BQArrayGetCount(info->attributeOrder); ++i) {
    auto* name = static_cast<const BQString*>(BQArrayGetValueAtIndex(info->attributeOrder, i));
    auto* value = static_cast<const BQString*>(BQDictionaryGetValue(info->attributes, name));
    result += " " + text(name) + "=" + text(value);
  }
  EXPECT_EQ(BQDictionaryGetCount(info->attributes), BQArrayGetCount(info->attributeOrder));
  return result;
}

/* Elements as `name attribute=value(children)`, text in quotes, CDATA in brackets, references as written. */
std::string dump(const BQTree* tree) {
  std::string result;
  for (const BQTree* child = BQTreeGetFirstChild(tree); child; child = BQTreeGetNextSibling(child)) {
    const BQXMLNode* node = BQXMLTreeGetNode(child);
    std::string string = text(BQXMLNodeGetString(node));
    if (!result.empty()) result += ',';
    switch (BQXMLNodeGetTypeCode(node)) {
      case kBQXMLNodeTypeElement:
        result += string + dumpAttributes(static_cast<const BQXMLElementInfo*>(BQXMLNodeGetInfoPtr(node)));
        result += "(" + dump(child) + ")";
        break;
      case kBQXMLNodeTypeText:
        result += "\"" + string + "\"";
        break;
      case kBQXMLNodeTypeCDATASection:
        result += "[" + string + "]";
        break;
      case kBQXMLNodeTypeEntityReference:
        result += "&" + string + ";";
        break;
      default:
        ADD_FAILURE() << "node of type " << BQXMLNodeGetTypeCode(node);
    }
  }
  return result;
}

Ref<const BQTree> parse(std::string_view bytes, Ref<const BQDictionary>* error = nullptr) {
  auto data = own(BQDataCreateView(bytes.data(), static_cast<BQIndex>(bytes.size())));
  const BQDictionary* problem = nullptr;
  auto tree = own(BQXMLTreeCreateFromDataWithError(data.get(), &problem));
  EXPECT_NE(static_cast<bool>(tree), problem != nullptr);
  auto kept = own(problem);
  if (error != nullptr) *error = kept;
  return tree;
}

/* A part of an error as text. */
std::string part(const Ref<const BQDictionary>& error, const BQString* key) {
  auto shown = own(BQStringCreateWithFormat(BQSTR("%@"), BQDictionaryGetValue(error.get(), key)));
  return text(shown);
}

/* The dump, or what is wrong. */
std::string outcome(std::string_view bytes) {
  Ref<const BQDictionary> error;
  Ref<const BQTree> tree = parse(bytes, &error);
  return tree ? dump(tree.get()) : "error: " + part(error, kBQXMLTreeErrorDescription);
}

/* The error as "line, byte: description". */
std::string failure(std::string_view bytes) {
  Ref<const BQDictionary> error;
  EXPECT_FALSE(parse(bytes, &error)) << bytes;
  return part(error, kBQXMLTreeErrorLineNumber) + ", " + part(error, kBQXMLTreeErrorLocation) + ": " +
         part(error, kBQXMLTreeErrorDescription);
}

std::string repeated(std::string_view piece, size_t count) {
  std::string result;
  for (size_t i = 0; i < count; ++i) result += piece;
  return result;
}

std::string wide(std::string_view ascii, bool bigEndian) {
  std::string result;
  for (char c : ascii) result += bigEndian ? ""s + '\0' + c : ""s + c + '\0';
  return result;
}

/* A comment at the end leaves a plain document to expat. */
const std::string kUnusual = "<!---->";

/* Documents and their dumps. */
void expectDumps(const std::vector<std::pair<std::string, std::string>>& cases) {
  for (const auto& [document, dump] : cases) {
    EXPECT_EQ(outcome(document), dump) << document;
    bool isWide = document.find('\0') != std::string::npos;
    EXPECT_EQ(outcome(document + (isWide ? "" : kUnusual)), dump) << document;
  }
}

std::string dumpOrNothing(const std::string& document) {
  auto tree = parse(document);
  return tree ? dump(tree.get()) : "";
}

TEST(XMLParser, ReadsPlainDocumentsAsExpatDoes) {
  const std::string plain =
      "<?xml version='1.0' encoding=\"utf-8\"?>\r\n<n:a b = 'c\"' d=\"'\">x&lt;&#65;\xC3\xA5]]\r\n"
      "<c/><d\t>&#x20AC;&apos;]\ry</d ><e f=''></e>\xE2\x82\xAC\xF0\x9F\x98\x80</n:a>\n";
  ASSERT_TRUE(parse(plain));
  auto expectTheSame = [](const std::string& document) {
    EXPECT_EQ(dumpOrNothing(document), dumpOrNothing(document + kUnusual)) << document;
  };
  for (size_t i = 0; i < plain.size(); ++i) {
    expectTheSame(std::string(plain).erase(i, 1));
    for (char c : "\0\r\x01 <>&;'\"=/:-.!?#]x9\x7F\x80\xBF\xC0\xED\xEF\xFF"s) {
      expectTheSame(std::string(plain).replace(i, 1, 1, c));
      expectTheSame(std::string(plain).insert(i, 1, c));
    }
  }
}

TEST(XMLParser, KeepsTextAndDropsWhiteSpaceBetweenTags) {
  expectDumps({
      {"<a/>", "a()"},
      {"<a> </a>", "a()"},
      {"<a>\n  <b> </b>\r\n\t<c/>\n</a>", "a(b(),c())"},
      {"<a>&#32;&#10;</a>", "a()"},
      {"<a> x </a>", "a(\" x \")"},
      {"<a>\n x<b/> y \n</a>", "a(\"\n x\",b(),\" y \n\")"},
      {"<a>1\r\n2\r3\n4</a>", "a(\"1\n2\n3\n4\")"},
      {"<a>\xC2\xA0</a>", "a(\"\xC2\xA0\")"},
      {"<n:a><n:b.c-d/></n:a>", "n:a(n:b.c-d())"},
      {"<a>" + std::string(100000, 'x') + "</a>", "a(\"" + std::string(100000, 'x') + "\")"},
  });
}

TEST(XMLParser, KeepsWhiteSpaceBesideReferencesAlone) {
  expectDumps({
      {"<a> <![CDATA[x]]> <![CDATA[ ]]></a>", "a([x],[ ])"},
      {"<a><b/> <![CDATA[x]]><c/> </a>", "a(b(),[x],c())"},
      {"<a> x <![CDATA[]]> y</a>", "a(\" x \",[],\" y\")"},
      {"<a><![CDATA[]]> &e; <![CDATA[]]></a>", "a([],\" \",&e;,\" \",[])"},
      {"<a>1<![CDATA[<&]]]><![CDATA[\r\n]]>2</a>", "a(\"1\",[<&]],[\n],\"2\")"},
      {"<a> &e; &f;</a>", "a(\" \",&e;,\" \",&f;)"},
      {"<a><b/> <!-- --> &e;</a>", "a(b(),\"  \",&e;)"},
  });
}

TEST(XMLParser, DropsCommentsInstructionsAndDocumentType) {
  expectDumps({
      {"<?xml version='1.0'?><!-- 1 --><!DOCTYPE a><?p q?><a>x<!-- 2 -->y<?p?>z</a><!-- 3 -->", "a(\"xyz\")"},
      {"<a> <!-- --> <b/><?p?></a>", "a(b())"},
      {"<!DOCTYPE a [<!ATTLIST a given CDATA 'by the type'>]><a own='1'/>", "a own=1()"},
      {"<!DOCTYPE a [<!ATTLIST a given CDATA 'by the type'>]><a/>", "a()"},
  });
}

TEST(XMLParser, DecodesPredefinedEntitiesAndCharacterReferences) {
  expectDumps({
      {"<a>&lt;&amp;&gt;&quot;&apos;</a>", "a(\"<&>\"'\")"},
      {"<a>x&#65;&#x20AC;&#x1F600;&#13;y</a>", "a(\"xA\xE2\x82\xAC\xF0\x9F\x98\x80\ry\")"},
      {"<a>&amp;amp;&#38;lt;</a>", "a(\"&amp;&lt;\")"},
      {"<a b='&lt;&#65;&amp;amp;'/>", "a b=<A&amp;()"},
  });
}

TEST(XMLParser, KeepsOtherEntityReferencesUnexpanded) {
  expectDumps({
      {"<a>x&e;y</a>", "a(\"x\",&e;,\"y\")"},
      {"<?xml version='1.0' standalone='yes'?><a>x&e;y</a>", "a(\"x\",&e;,\"y\")"},
      {"<?xml version=\"1.0\" standalone = \"yes\" ?><a>x&e;y</a>", "a(\"x\",&e;,\"y\")"},
      {"<!DOCTYPE a SYSTEM 'file:///nowhere'><a>&e;</a>", "a(&e;)"},
      {"<!DOCTYPE a [<!ENTITY e 'E'>]><a>x&e;y&f;</a>", "a(\"x\",&e;,\"y\",&f;)"},
      {"<!DOCTYPE a SYSTEM 'file:///nowhere' [<!ENTITY e 'E'>]><a>&e;&f;</a>", "a(&e;,&f;)"},
      {"<!DOCTYPE a [<!ENTITY e SYSTEM 'file:///etc/passwd'>]><a>x&e;y</a>", "a(\"x\",&e;,\"y\")"},
      {"<!DOCTYPE a [<!ENTITY % p SYSTEM 'file:///nowhere'>%p;<!ENTITY e 'E'>]><a>&e;</a>", "a(&e;)"},
      {"<?xml version='1.0' standalone='yes'?><!DOCTYPE a [<!ENTITY e 'E'>]><a>&e;&f;</a>", "a(&e;,&f;)"},
  });
}

TEST(XMLParser, KeepsEntityReferencesOfAttributesAsWritten) {
  expectDumps({
      {"<a b='x&e;y'/>", "a b=x&e;y()"},
      {"<!DOCTYPE a [<!ENTITY e 'E'>]><a b='x&e;y' c='&lt;'/>", "a b=x&e;y c=<()"},
      {"<a b = '\"&e;&#x41;&#66;&apos;' \n c=\"'&e;&e;\"/>", "a b=\"&e;AB' c='&e;&e;()"},
      {"<a b='&e;\r\n\t&#10;&#xE9;&#x20AC;&#x1F600;'/>", "a b=&e;  \n\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80()"},
      {"<?xml version='1.0'?>\xEF\xBB\xBF<a b='&e;'/>", "a b=&e;()"},
      {"\xEF\xBB\xBF<?xml version='1.0' standalone='yes'?><a b='&e;'/>", "a b=&e;()"},
      {"<?xml version='1.0' encoding='iso-8859-1'?><a b='\xE9&e;'/>", "a b=\xC3\xA9&e;()"},
  });
}

TEST(XMLParser, RestoresReferencesOfAnyBytes) {
  const std::pair<const char*, const char*> rows[] = {
      {"&", "-"},
      {"x&&;", "x&&;"},
      {"&e;&", "&e;&"},
      {"&#1114112;", "&#1114112;"},
      {"&#xD800;", "&#xD800;"},
      {"&#0;", "&#0;"},
      {"&#99999999999;", "&#99999999999;"},
      {"&#65;", "-"},
  };
  for (const auto& [value, expected] : rows) {
    EXPECT_EQ(bq::textWithEntityReferences(value).value_or("-"), expected) << value;
  }
  for (const char* tag : {"", "<a", "<a ", "<a b", "<a b=\"", "<a b='x\""}) {
    EXPECT_EQ(bq::StartTag(tag).nextValue(), tag == "<a b='x\""s ? "x\"" : "") << tag;
  }
}

TEST(XMLParser, ReadsAttributesInOrder) {
  expectDumps({
      {"<a z='1' y='2' x='3'/>", "a z=1 y=2 x=3()"},
      {"<a b=' 1\n2\t'><a b=' 1\n2\t'/><a c='1 2 '/></a>", "a b= 1 2 (a b= 1 2 (),a c=1 2 ())"},
      {"<a><b c='d'/><b c='d'/><b d='c'/><b cd=''/></a>", "a(b c=d(),b c=d(),b d=c(),b cd=())"},
      {"<a b='" + std::string(5000, 'x') + "'/>", "a b=" + std::string(5000, 'x') + "()"},
  });
}

TEST(XMLParser, ReadsEveryEncoding) {
  std::string swedish = "a(\"\xC3\xA5\")", plain = "a(\"x\",&e;)";
  expectDumps({
      {"<a>\xC3\xA5</a>", swedish},
      {"\xEF\xBB\xBF<a>\xC3\xA5</a>", swedish},
      {"\xEF\xBB\xBF<?xml version='1.0'?><a>\xC3\xA5</a>", swedish},
      {"<?xml version='1.0'?>\r\n\xEF\xBB\xBF<a>\xC3\xA5</a>", swedish},
      {"<?xml version='1.0' encoding='utf8'?><a>\xC3\xA5</a>", swedish},
      {"<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE5</a>", swedish},
      {"<?xml version='1.0' encoding='latin1' standalone='yes'?><a>\xE5</a>", swedish},
      {"<?xml version='1.0' encoding=\"windows-1252\"?><a>\x80</a>", "a(\"\xE2\x82\xAC\")"},
      {"<?xml version='1.0' encoding='Shift_JIS'?><a>\x93\xFA</a>", "a(\"\xE6\x97\xA5\")"},
      {"<?XML VERSION='1.0' ENCODING='ISO-8859-1'?><a>\xE5</a>", swedish},
      {"\xFE\xFF" + wide("<a>x&e;</a>", true), plain},
      {"\xFF\xFE" + wide("<?xml version='1.0' encoding='UTF-16'?><a>x&e;</a>", false), plain},
      {"\xFF\xFE" + wide("<?xml version='1.0' encoding='UTF-8'?><a>x&e;</a>", false), plain},
      {wide("<?xml version='1.0' encoding='UTF-16'?><a>x&e;</a>", true), plain},
      {wide("<a>x&e;</a>", false), plain},
      {"\xFE\xFF" + wide("<?xml version='1.0'?>\r\n", true) + "\xFE\xFF" + wide("<a>x&e;</a>", true), plain},
  });
}

TEST(XMLParser, RefusesBytesThatAreNotInTheirEncoding) {
  constexpr int kInvalidToken = 4;
  /* U+2600 has the byte of an ampersand in UTF-16. */
  const std::string star = wide("<a b='", false) + "\0&"s + wide("'/>", false);
  const std::pair<std::string, int> rows[] = {
      {"<a>\xE5</a>", kBQXMLTreeStatusBadEncoding},
      {"<a>\xED\xA0\x80</a>", kBQXMLTreeStatusBadEncoding},
      {"<a>\xEF\xBF\xBF</a>", kInvalidToken},
      {"<a>\x01</a>", kInvalidToken},
      {"<a>\0</a>"s, kBQXMLTreeStatusBadEncoding},
      {"\xEF\xBB\xBF\xEF\xBB\xBF<a/>", kBQXMLTreeStatusBadEncoding},
      {"\xEF\xBB\xBF" + star, kBQXMLTreeStatusBadEncoding},
      {wide(" ", false) + star, kBQXMLTreeStatusBadEncoding},
      {"\xFE\xFF" + wide(star, true), kBQXMLTreeStatusBadEncoding},
      {"\xFF\xFE\0\0"s + wide(wide(star, false), false), kBQXMLTreeStatusBadEncoding},
      {"<?xml version='1.0' encoding='" + std::string(1 << 20, 'x') + "'?><a/>", kBQXMLTreeStatusBadEncoding},
      {"<?xml version='1.0' encoding='\xFF%s%n'?><a/>", kBQXMLTreeStatusBadEncoding},
      {"<?xml version='1.0' encoding='us-ascii'?><a>\xE5</a>", kBQXMLTreeStatusBadEncoding},
      {"<?xml version='1.0' encoding='utf-16'?><a>x</a>", kBQXMLTreeStatusBadEncoding},
      {"<?xml version='1.0' encoding='Shift_JIS'?><a>\xFF\xFF</a>", kBQXMLTreeStatusBadEncoding},
      {"\xFE\xFF\xD8\x00"s + wide("<a/>", true), kBQXMLTreeStatusBadEncoding},
      {"\xFE\xFF" + wide("<a/>", true) + "\0"s, kBQXMLTreeStatusBadEncoding},
  };
  for (const auto& [document, status] : rows) {
    Ref<const BQDictionary> error;
    EXPECT_FALSE(parse(document, &error)) << document;
    EXPECT_EQ(part(error, kBQXMLTreeErrorStatusCode), std::to_string(status)) << document;
    EXPECT_LT(part(error, kBQXMLTreeErrorDescription).size(), 200u);
  }
}

TEST(XMLParser, SaysWhatIsWrongAndWhere) {
  const std::pair<const char*, const char*> rows[] = {
      {"", "1, 0: no element found"},
      {"<a>\n<b></a>", "2, 9: mismatched tag"},
      {"<a/><b/>", "1, 4: junk after document element"},
      {"<a b='1'\n b='2'/>", "2, 10: duplicate attribute"},
      {"<a b='<'/>", "1, 6: not well-formed (invalid token)"},
      {"<a>&#0;</a>", "1, 3: reference to invalid character number"},
      {"<?xml version='1.0'?>\n\xEF\xBB\xBF<a></b>", "2, 30: mismatched tag"},
      {"<?xml version='1.0' standalone='yes'?>\n<a></b>", "2, 44: mismatched tag"},
      {"\xEF\xBB\xBF<a></b>", "1, 8: mismatched tag"},
      {"<?xml version='1.0' version='1.0'?><a/>", "1, 20: XML declaration not well-formed"},
      {"<?xml Version='1.0'?><a/>", "1, 6: XML declaration not well-formed"},
      {"<?xml version='1.0' ENCODING='utf-8'?><a/>", "1, 20: XML declaration not well-formed"},
      {"<?XML VERSION='1.0' Standalone='yes'?><a/>", "1, 20: XML declaration not well-formed"},
      {"\xEF\xBB\xBF<a>\n\xE5</a>", "2, 7: not well-formed (NUL or malformed UTF-8)"},
      {" <?xml version='1.0'?><a/>", "1, 1: XML or text declaration not at start of entity"},
  };
  for (const auto& [document, expected] : rows) EXPECT_EQ(failure(document), expected) << document;
}

TEST(XMLParser, RefusesDeepNesting) {
  auto nested = [](size_t depth) { return repeated("<a>", depth) + "<!---->" + repeated("</a>", depth); };
  EXPECT_TRUE(parse(nested(512)));
  EXPECT_TRUE(parse("<a>" + repeated(repeated("<a>", 511) + repeated("</a>", 511), 3) + "</a>"));
  for (const std::string& document :
       {nested(513), nested(100000), repeated("<a>", 512) + "<a/>", repeated("<a>", 1000000)}) {
    Ref<const BQDictionary> error;
    EXPECT_FALSE(parse("\n" + document, &error));
    EXPECT_EQ(part(error, kBQXMLTreeErrorStatusCode), std::to_string(kBQXMLTreeStatusTooDeep));
    EXPECT_EQ(part(error, kBQXMLTreeErrorLineNumber), "2");
    EXPECT_EQ(part(error, kBQXMLTreeErrorLocation), std::to_string(1 + 512 * 3));
  }
}

std::string entityChain(size_t count, size_t references, std::string_view document) {
  std::string result = "<!DOCTYPE a [<!ENTITY e0 'xxxxxxxxxx'>";
  for (size_t i = 1; i < count; ++i) {
    result += "<!ENTITY e" + std::to_string(i) + " '" +
              repeated("&e" + std::to_string(i - 1) + ";", references) + "'>";
  }
  return result + std::string(document);
}

TEST(XMLParser, SurvivesEntityBombs) {
  EXPECT_EQ(outcome(entityChain(30, 10, "]><a>&e29;</a>")), "a(&e29;)");
  EXPECT_EQ(outcome(entityChain(3, 3, "]><a b='&e2;'/>")), "a b=&e2;()");
  std::string breach = "error: limit on input amplification factor (from DTD and entities) breached";
  EXPECT_EQ(outcome(entityChain(30, 10, "]><a b='&e29;'/>")), breach);
  EXPECT_EQ(outcome(entityChain(30, 10, "<!ATTLIST a b CDATA '&e29;'>]><a/>")), breach);
  EXPECT_EQ(outcome("<!DOCTYPE a [<!ENTITY e '" + std::string(100000, 'x') + "'>]><a>" +
                    repeated("<a b='&e;'/>", 1000) + "</a>"),
            breach);
  for (const char* use : {"]><a b='&e64;'/>", "<!ATTLIST a b CDATA '&e64;'>]><a/>"}) {
    EXPECT_TRUE(parse(entityChain(65, 1, use))) << use;
    EXPECT_EQ(outcome(entityChain(100000, 1, use)), "error: too many entities that refer to others") << use;
  }
  std::string loop = "<!DOCTYPE a [<!ENTITY e '&f;'><!ENTITY f '&e;'>]>";
  EXPECT_EQ(outcome(loop + "<a>&e;</a>"), "a(&e;)");
  EXPECT_EQ(outcome(loop + "<a b='&e;'/>"), "error: recursive entity reference");
}

TEST(XMLParser, RefusesManyDeclaredAttributes) {
  auto declaring = [](size_t count) {
    std::string list;
    for (size_t i = 0; i < count; ++i) list += " n" + std::to_string(i) + " CDATA 'v'";
    return "<!DOCTYPE a [<!ATTLIST a" + list + ">]><a>" + repeated("<a/>", 100000) + "</a>";
  };
  EXPECT_TRUE(parse(declaring(64)));
  EXPECT_EQ(outcome(declaring(10000)), "error: too many attributes declared by the document type");
}

TEST(XMLParser, RefusesWhatTakesMuchMemory) {
  auto numbered = [](int count, const std::string& before, const std::string& after) {
    std::string text;
    for (int i = 0; i < count; ++i) text += before + std::to_string(i) + after;
    return text;
  };
  EXPECT_TRUE(parse("<a" + numbered(4096, " n", "='v'") + "/>"));
  EXPECT_EQ(outcome("<a" + numbered(4097, " n", "='v'") + "/>"), "error: too many attributes in one tag");
  EXPECT_TRUE(parse("<a>" + numbered(16383, "<n", "/>") + "</a>"));
  EXPECT_EQ(outcome("<a>" + numbered(60000, "<n", "/>") + "</a>"), "error: too many different names");
  EXPECT_EQ(outcome("<a>" + numbered(60000, "<a n", "=''/>") + "</a>"), "error: too many different names");
  EXPECT_TRUE(parse("<a>" + repeated("&e;", 16384) + "</a>"));
  EXPECT_EQ(outcome("<a>" + repeated("&e;", 20000) + "</a>"), "error: too many references to entities");
}

TEST(XMLParser, SurvivesManyAndLongNames) {
  std::string longName(10 << 20, 'n');
  EXPECT_EQ(outcome("<" + longName + "/>"), longName + "()");
  EXPECT_EQ(outcome("<a>&" + longName + ";</a>"), "a(&" + longName + ";)");
  std::string document = "<a", expected = "a";
  for (int i = 0; i < 4096; ++i)
    document += " n" + std::to_string(i) + "='v'", expected += " n" + std::to_string(i) + "=v";
  document += '>', expected += '(';
  for (int i = 0; i < 20000; ++i) {
    std::string name = "s" + std::to_string(i) + "e";
    document += "<" + name + "><b>x</b>y</" + name + ">";
    expected += (i == 0 ? "" : ",") + name + "(b(\"x\"),\"y\")";
  }
  EXPECT_EQ(outcome(document + "</a>"), expected + ")");
  EXPECT_EQ(outcome("<b><a/><b/></b>"), "b(a(),b())");
}

TEST(XMLParser, AnswersEveryDamagedDocument) {
  std::string document =
      "<?xml version='1.0' encoding='utf-8' standalone='yes'?>\n\xEF\xBB\xBF<!DOCTYPE a [<!ENTITY e 'E'>]>"
      "<a b='&e;&#65;&lt;\xC3\xA5'>x<![CDATA[y]]>&f;<c/><!-- z --></a>";
  ASSERT_TRUE(parse(document));
  for (size_t length = 0; length < document.size(); ++length) EXPECT_FALSE(parse(document.substr(0, length)));
  for (size_t i = 0; i < document.size(); ++i) {
    for (char c : {'\0', '<', '>', '&', '\'', ' ', 'x', '\xFF', '\xEF'}) {
      std::string damaged = document;
      damaged[i] = c;
      outcome(damaged);
    }
  }
}

/* The first position below `tree` with a path of first children. */
const BQTree* descend(const BQTree* tree, int levels) {
  while (levels-- > 0) tree = BQTreeGetFirstChild(tree);
  return tree;
}

TEST(XMLTree, PartsOutliveTheTree) {
  const char* document = "<a b='value'><c d='x'>some text</c><c/></a>";
  auto part = [document](auto find) {
    Ref<const BQTree> tree = parse(document);
    return Ref<const void>::retain(find(tree.get()));
  };
  auto subtree = part([](const BQTree* tree) { return descend(tree, 1); });
  auto node = part([](const BQTree* tree) { return BQXMLTreeGetNode(descend(tree, 3)); });
  auto string =
      part([](const BQTree* tree) { return BQXMLNodeGetString(BQXMLTreeGetNode(descend(tree, 3))); });
  auto attributes = part([](const BQTree* tree) {
    auto* info = BQXMLNodeGetInfoPtr(BQXMLTreeGetNode(descend(tree, 1)));
    return static_cast<const BQXMLElementInfo*>(info)->attributes;
  });
  EXPECT_EQ(dump(static_cast<const BQTree*>(subtree.get())), "c d=x(\"some text\"),c()");
  EXPECT_EQ(text(BQXMLNodeGetString(static_cast<const BQXMLNode*>(node.get()))), "some text");
  EXPECT_EQ(describe(string.get()), "some text");
  EXPECT_EQ(describe(attributes.get()), R"({"b": "value"})");
}

TEST(XMLTree, EqualNamesAndAttributesAreShared) {
  Ref<const BQTree> tree = parse("<a><name t='int' x='1'/><name t='int' x='1'/></a>");
  const BQTree* first = descend(tree.get(), 2);
  const BQTree* second = BQTreeGetNextSibling(first);
  EXPECT_EQ(BQXMLNodeGetString(BQXMLTreeGetNode(first)), BQXMLNodeGetString(BQXMLTreeGetNode(second)));
  EXPECT_EQ(BQXMLNodeGetInfoPtr(BQXMLTreeGetNode(first)), BQXMLNodeGetInfoPtr(BQXMLTreeGetNode(second)));
}

TEST(XMLTree, CountsAndVisitsChildrenInOrder) {
  Ref<const BQTree> tree = parse("<a>1<b/>&c;</a>");
  const BQTree* root = BQTreeGetFirstChild(tree.get());
  std::string names;
  auto visit = [](const void* child, void* context) {
    *static_cast<std::string*>(context) +=
        text(BQXMLNodeGetString(BQXMLTreeGetNode(static_cast<const BQTree*>(child))));
  };
  BQTreeApplyFunctionToChildren(root, visit, &names);
  EXPECT_EQ(names, "1bc");
  EXPECT_EQ(BQTreeGetChildCount(root), 3);
  EXPECT_EQ(BQTreeGetChildCount(tree.get()), 1);
}

TEST(XMLTree, DescribesItsNodesShortly) {
  Ref<const BQTree> tree = parse("<a><![CDATA[x]]>&e;text</a>");
  EXPECT_EQ(describe(tree.get()), "<BQTree document>");
  EXPECT_EQ(describe(descend(tree.get(), 1)), "<BQTree element a>");
  std::string nodes;
  for (const BQTree* child = descend(tree.get(), 2); child; child = BQTreeGetNextSibling(child)) {
    nodes += describe(BQXMLTreeGetNode(child));
  }
  EXPECT_EQ(nodes, "<BQXMLNode CDATA section><BQXMLNode entity reference e><BQXMLNode text>");
}

TEST(XMLTree, ThreadsParseAndShareTrees) {
  Ref<const BQTree> shared = parse("<a>x</a>");
  auto work = [&shared] {
    for (int i = 0; i < 200; ++i) {
      auto kept = Ref<const BQTree>::retain(descend(shared.get(), 1));
      EXPECT_EQ(dump(kept.get()), "\"x\"");
      EXPECT_EQ(outcome("<b c='d'>y</b>"), "b c=d(\"y\")");
    }
  };
  std::thread other(work);
  work();
  other.join();
}

}  // namespace
