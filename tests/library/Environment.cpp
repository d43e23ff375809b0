#include "LibraryTestSupport.h"

namespace {

[[maybe_unused]] const auto* const kPrivateTemporaryDirectory =
    ::testing::AddGlobalTestEnvironment(new lqtest::PrivateTemporaryDirectory);

}  // namespace
