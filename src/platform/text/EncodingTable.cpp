#include "platform/text/EncodingTable.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>
#include <unordered_map>

#include "platform/text/EncodingUTF16.h"

namespace bq {

namespace {

/*
 * By ascending number. The numbers are stored in requests and must not change. Encodings that the C
 * library offers but nobody meets on the wire stay out: each brings a decoder that hostile bytes reach.
 * Shift_JIS is read as its superset of practice, in which 0x5C is the backslash.
 */
#define NAME(text) BQ_CONSTANT_STRING_INIT(text)
constexpr EncodingRecord kEncodings[] = {
    {kBQStringEncodingWestern, true, NAME("macintosh"), "mac csmacintosh macroman xmacroman", nullptr},
    {0x0007, true, NAME("x-mac-cyrillic"), "maccyrillic", "MAC-CYRILLIC"},
    {0x001D, true, NAME("x-mac-centraleurroman"), "maccentraleurope xmacce", "MAC-CENTRALEUROPE"},
    {0x0098, true, NAME("x-mac-ukrainian"), "macukrainian", "MAC-UK"},
    {kBQStringEncodingUTF16, false, NAME("UTF-16"), "csutf16 iso10646ucs2 ucs2 csunicode unicode", nullptr},
    {kBQStringEncodingISOLatin1, true, NAME("ISO-8859-1"),
     "iso88591:1987 isoir100 latin1 l1 ibm819 cp819 csisolatin1", nullptr},
    {0x0202, true, NAME("ISO-8859-2"), "iso88592:1987 isoir101 latin2 l2 csisolatin2", nullptr},
    {0x0203, true, NAME("ISO-8859-3"), "iso88593:1988 isoir109 latin3 l3 csisolatin3", nullptr},
    {0x0204, true, NAME("ISO-8859-4"), "iso88594:1988 isoir110 latin4 l4 csisolatin4", nullptr},
    {0x0205, true, NAME("ISO-8859-5"), "iso88595:1988 isoir144 cyrillic csisolatincyrillic", nullptr},
    {0x0206, true, NAME("ISO-8859-6"), "iso88596:1987 isoir127 ecma114 asmo708 arabic csisolatinarabic",
     nullptr},
    {0x0207, true, NAME("ISO-8859-7"),
     "iso88597:1987 iso88597:2003 isoir126 elot928 ecma118 greek greek8 csisolatingreek", nullptr},
    {0x0208, true, NAME("ISO-8859-8"), "iso88598:1988 iso88598i isoir138 hebrew csisolatinhebrew", nullptr},
    {0x0209, true, NAME("ISO-8859-9"), "iso88599:1989 isoir148 latin5 l5 csisolatin5", nullptr},
    {0x020A, true, NAME("ISO-8859-10"), "iso885910:1992 isoir157 latin6 l6 csisolatin6", nullptr},
    {0x020B, true, NAME("ISO-8859-11"), "csiso885911", nullptr},
    {0x020D, true, NAME("ISO-8859-13"), "latin7 l7 csiso885913", nullptr},
    {0x020E, true, NAME("ISO-8859-14"), "iso885914:1998 isoir199 latin8 l8 isoceltic csiso885914", nullptr},
    {0x020F, true, NAME("ISO-8859-15"), "iso885915:1998 latin9 csiso885915", nullptr},
    {0x0210, true, NAME("ISO-8859-16"), "iso885916:2001 isoir226 latin10 l10 csiso885916", nullptr},
    {0x0400, true, NAME("IBM437"), "cp437 437 cspc8codepage437", nullptr},
    {0x0405, true, NAME("IBM737"), "cp737", "CP737"},
    {0x0406, true, NAME("IBM775"), "cp775 cspc775baltic", nullptr},
    {0x0410, true, NAME("IBM850"), "cp850 850 cspc850multilingual", nullptr},
    {0x0411, true, NAME("IBM851"), "cp851 851 csibm851", nullptr},
    {0x0412, true, NAME("IBM852"), "cp852 852 cspcp852", nullptr},
    {0x0413, true, NAME("IBM855"), "cp855 855 csibm855", nullptr},
    {0x0414, true, NAME("IBM857"), "cp857 857 csibm857", nullptr},
    {0x0415, true, NAME("IBM00858"), "ccsid00858 cp00858 cp858 ibm858 csibm00858", "CP858"},
    {0x0416, true, NAME("IBM860"), "cp860 860 csibm860", nullptr},
    {0x0417, true, NAME("IBM861"), "cp861 861 cpis csibm861", nullptr},
    {0x0418, true, NAME("IBM862"), "cp862 862 cspc862latinhebrew", nullptr},
    {0x0419, true, NAME("IBM863"), "cp863 863 csibm863", nullptr},
    {0x041A, false, NAME("IBM864"), "cp864 csibm864", nullptr},
    {0x041B, true, NAME("IBM865"), "cp865 865 csibm865", nullptr},
    {0x041C, true, NAME("IBM866"), "cp866 866 csibm866", nullptr},
    {0x041D, true, NAME("windows-874"), "cp874 ibm874 cswindows874", "CP874"},
    {0x041E, true, NAME("IBM869"), "cp869 869 cpgr csibm869", nullptr},
    {0x0420, true, NAME("Windows-31J"), "cp932 ms932 windows932 cswindows31j", "CP932"},
    {0x0421, true, NAME("GBK"), "cp936 ms936 windows936 xgbk csgbk", nullptr},
    {0x0422, true, NAME("windows-949"), "cp949 ms949 uhc", "UHC"},
    {kBQStringEncodingWindowsLatin1, true, NAME("windows-1252"), "cp1252 xcp1252 msansi cswindows1252",
     nullptr},
    {0x0501, true, NAME("windows-1250"), "cp1250 xcp1250 msee cswindows1250", nullptr},
    {0x0502, true, NAME("windows-1251"), "cp1251 xcp1251 mscyrl cswindows1251", nullptr},
    {0x0503, true, NAME("windows-1253"), "cp1253 xcp1253 msgreek cswindows1253", nullptr},
    {0x0504, true, NAME("windows-1254"), "cp1254 xcp1254 msturk cswindows1254", nullptr},
    {0x0505, true, NAME("windows-1255"), "cp1255 xcp1255 mshebr cswindows1255", nullptr},
    {0x0506, true, NAME("windows-1256"), "cp1256 xcp1256 msarab cswindows1256", nullptr},
    {0x0507, true, NAME("windows-1257"), "cp1257 xcp1257 winbaltrim cswindows1257", nullptr},
    {0x0508, true, NAME("windows-1258"), "cp1258 xcp1258 cswindows1258", nullptr},
    {kBQStringEncodingASCII, true, NAME("US-ASCII"),
     "ascii us ansix3.41968 ansix3.41986 iso646.irv:1991 iso646us isoir6 ibm367 cp367 csascii", nullptr},
    {0x0632, true, NAME("GB18030"), "csgb18030", nullptr},
    {0x0820, false, NAME("ISO-2022-JP"), "csiso2022jp", nullptr},
    {0x0821, false, NAME("ISO-2022-JP-2"), "csiso2022jp2", nullptr},
    {0x0920, true, NAME("EUC-JP"), "xeucjp ujis extendedunixcodepackedformatforjapanese cseucpkdfmtjapanese",
     nullptr},
    {0x0930, true, NAME("GB2312"), "euccn xeuccn cngb gb231280 chinese isoir58 csgb2312 csiso58gb231280",
     "EUC-CN"},
    {0x0931, true, NAME("EUC-TW"), "xeuctw", nullptr},
    {0x0940, true, NAME("EUC-KR"), "ksc56011987 ksc56011989 ksc5601 korean isoir149 cseuckr csksc56011987",
     nullptr},
    {0x0A01, true, NAME("Shift_JIS"), "sjis xsjis mskanji csshiftjis", "CP932"},
    {0x0A02, true, NAME("KOI8-R"), "koi8 koi cskoi8r", nullptr},
    {0x0A03, true, NAME("Big5"), "bigfive cnbig5 xxbig5 cp950 windows950 csbig5", nullptr},
    {0x0A06, true, NAME("Big5-HKSCS"), "csbig5hkscs", nullptr},
    {0x0A07, false, NAME("VISCII"), "csviscii", nullptr},
    {0x0A08, true, NAME("KOI8-U"), "cskoi8u", nullptr},
    {0x0A09, true, NAME("TIS-620"), "tis620.25330 tis620.25291 cstis620", nullptr},
    {0x0A0A, false, NAME("TCVN"), "tcvn5712 tcvn57121 tcvn57121:1993", nullptr},
    {0x0A0B, true, NAME("hp-roman8"), "roman8 r8 cshproman8", "HP-ROMAN8"},
    {0x0A0C, true, NAME("DEC-MCS"), "dec csdecmcs", nullptr},
    {0x0A0D, true, NAME("PTCP154"), "pt154 cp154 cyrillicasian csptcp154", "PT154"},
    {0x0A0E, true, NAME("KZ-1048"), "strk10482002 rk1048 cskz1048", "RK1048"},
    {0x0C01, false, NAME("IBM037"), "cp037 ebcdiccpus ebcdiccpca ebcdiccpwt ebcdiccpnl csibm037", nullptr},
    {0x0C02, false, NAME("IBM273"), "cp273 csibm273", nullptr},
    {0x0C03, false, NAME("IBM277"), "ebcdiccpdk ebcdiccpno csibm277", nullptr},
    {0x0C04, false, NAME("IBM278"), "cp278 ebcdiccpfi ebcdiccpse csibm278", nullptr},
    {0x0C05, false, NAME("IBM280"), "cp280 ebcdiccpit csibm280", nullptr},
    {0x0C06, false, NAME("IBM284"), "cp284 ebcdiccpes csibm284", nullptr},
    {0x0C07, false, NAME("IBM285"), "cp285 ebcdiccpgb csibm285", nullptr},
    {0x0C08, false, NAME("IBM297"), "cp297 ebcdiccpfr csibm297", nullptr},
    {0x0C09, false, NAME("IBM500"), "cp500 ebcdiccpbe ebcdiccpch csibm500", nullptr},
    {0x0C0A, false, NAME("IBM870"), "cp870 ebcdiccproece ebcdiccpyu csibm870", nullptr},
    {0x0C0B, false, NAME("IBM871"), "cp871 ebcdiccpis csibm871", nullptr},
    {0x0C0C, false, NAME("IBM1026"), "cp1026 csibm1026", nullptr},
    {0x0C0D, false, NAME("IBM1047"), "cp1047 csibm1047", nullptr},
    {0x0C0E, false, NAME("IBM01140"), "ccsid01140 cp01140 cp1140 csibm01140", "CP1140"},
    {0x0C0F, false, NAME("IBM01148"), "ccsid01148 cp01148 cp1148 csibm01148", "CP1148"},
    {kBQStringEncodingUTF8, true, NAME("UTF-8"), "csutf8 unicode11utf8 unicode20utf8 xunicode20utf8",
     nullptr},
    {kBQStringEncodingUTF32, false, NAME("UTF-32"), "csutf32 iso10646ucs4 ucs4 csucs4", nullptr},
    {kBQStringEncodingUTF16BE, false, NAME("UTF-16BE"), "csutf16be", nullptr},
    {kBQStringEncodingUTF16LE, false, NAME("UTF-16LE"), "csutf16le", nullptr},
    {kUTF32BE, false, NAME("UTF-32BE"), "csutf32be", nullptr},
    {kUTF32LE, false, NAME("UTF-32LE"), "csutf32le", nullptr},
};
#undef NAME

constexpr bool isBefore(const EncodingRecord& first, const EncodingRecord& second) {
  return first.number < second.number;
}
static_assert(std::is_sorted(std::begin(kEncodings), std::end(kEncodings), isBefore));

/* The form in which names are compared: lower case, and without the marks that spellings differ in. */
std::string foldName(std::string_view name) {
  std::string folded;
  folded.reserve(name.size());
  for (char character : name) {
    if (character == '-' || character == '_') continue;
    folded.push_back(character >= 'A' && character <= 'Z' ? static_cast<char>(character | 0x20) : character);
  }
  return folded;
}

using NameTable = std::unordered_map<std::string, BQStringEncoding>;

NameTable makeNameTable() {
  NameTable table;
  for (const EncodingRecord& record : kEncodings) {
    table.emplace(foldName(record.name.bytes), record.number);
    for (std::string_view aliases = record.aliases; !aliases.empty();) {
      const size_t end = std::min(aliases.find(' '), aliases.size());
      table.emplace(aliases.substr(0, end), record.number);
      aliases.remove_prefix(std::min(end + 1, aliases.size()));
    }
  }
  return table;
}

/* Longer names are not looked at: they come from peers and have no bound. */
constexpr size_t kMaximumNameLength = 64;

}  // namespace

const EncodingRecord* findEncoding(BQStringEncoding number) {
  const auto found = std::lower_bound(
      std::begin(kEncodings), std::end(kEncodings), number,
      [](const EncodingRecord& record, BQStringEncoding wanted) { return record.number < wanted; });
  return found != std::end(kEncodings) && found->number == number ? found : nullptr;
}

BQStringEncoding findEncodingByName(std::string_view name) {
  static const NameTable table = makeNameTable();
  if (name.size() > kMaximumNameLength) return kBQStringEncodingInvalidId;
  const auto found = table.find(foldName(name));
  return found != table.end() ? found->second : kBQStringEncodingInvalidId;
}

std::span<const EncodingRecord> allEncodings() {
  return kEncodings;
}

}  // namespace bq
