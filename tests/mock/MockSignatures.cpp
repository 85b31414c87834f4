#include "tests/mock/MockSignatures.h"

#include "tests/mock/FakeDefinitions.h"

#define KXCT_COMPILED_HERE(...) template class ::testing::internal::FunctionMocker<__VA_ARGS__>;
KXCT_MOCK_SIGNATURES(KXCT_COMPILED_HERE)
