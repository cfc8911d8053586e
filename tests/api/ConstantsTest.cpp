#include "support/Constants.h"

#include <gtest/gtest.h>

#include "support/Values.h"

namespace {

using namespace support;

/* Set before this program's main, when the library's own initialisers may not have run. */
const bool kSetBeforeMain = text(kVXXMLRPCProtocol) == "XML-RPC" && text(kVXRecordType) == "/VXRecordType";

TEST(Constants, HaveTheirDocumentedTextsBeforeAnyInitialiserRuns) {
  EXPECT_TRUE(kSetBeforeMain);
  for (auto [constant, value] : kConstants) EXPECT_EQ(text(constant), value);
}

}  // namespace
