#include "support/Test.h"

#include "models/Conversions.h"

TEST(TextConversion, MatchesModelOverRandomText) {
    tests::runOnRandomInputs(&tests::checkConversions);
    std::setlocale(LC_CTYPE, "C");
}
