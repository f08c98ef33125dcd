// Host pieces that need no runtime: tracing switches, the start-up failure report, library
// reuse and the missing-method text.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "host/core_clr_init_exception.h"
#include "host/dynamic_library.h"
#include "host/managed_binding.h"
#include "host/trace.h"

namespace {

std::string traced_with(const char* value) {
    trace::disable();
    if (value != nullptr)
        ::setenv("COREHOST_TRACE", value, 1);
    else
        ::unsetenv("COREHOST_TRACE");
    testing::internal::CaptureStdout();
    trace::initialize();
    trace::info("line %d", 7);
    std::string out = testing::internal::GetCapturedStdout();
    trace::disable();
    ::unsetenv("COREHOST_TRACE");
    return out;
}

TEST(Trace, SwitchFollowsTheEnvironment) {
    for (const char* off : {"0", "", "abc", "-1"})
        EXPECT_EQ(traced_with(off), "") << "COREHOST_TRACE=" << off;
    EXPECT_EQ(traced_with(nullptr), "");
    for (const char* on : {"1", "2", "7x"})
        EXPECT_EQ(traced_with(on), "CLR host tracing enabled\r\nline 7\r\n") << "COREHOST_TRACE=" << on;
}

TEST(Trace, ErrorsAreWrittenEvenWhenOff) {
    trace::disable();
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    trace::error("bad %s", "thing");
    trace::warning("hidden");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "bad thing\r\n");
}

TEST(CoreClrInitExceptionText, ListsDomainExeAndEveryProperty) {
    const char* keys[] = {"TRUSTED_PLATFORM_ASSEMBLIES", "APP_PATHS"};
    const char* values[] = {"", "/opt/a:/opt/b"};
    CoreClrInitException e(static_cast<int>(0x80004005), "/usr/bin/python3", "QuorixCLRHostDomain", 2, keys, values);
    EXPECT_STREQ(e.what(),
                 "coreclr_initialize failed (0x80004005) [<APP_DOMAIN_NAME>='QuorixCLRHostDomain',"
                 "<HOST_EXE_PATH>='/usr/bin/python3',<TRUSTED_PLATFORM_ASSEMBLIES>='',<APP_PATHS>='/opt/a:/opt/b']");
    CoreClrInitException small(-1, "e", "d", 0, nullptr, nullptr);
    EXPECT_STREQ(small.what(), "coreclr_initialize failed (0xffffffff) [<APP_DOMAIN_NAME>='d',<HOST_EXE_PATH>='e']");
}

TEST(MissingMethodText, NamesTypeAssemblyMethodAndStatus) {
    EXPECT_EQ(missing_method_error_message("Quorix.WrpGen.Interop.ExchangeHost", "WrpInterop.Quorix.Folio",
                                           "BoxStcTarget", -2147024894),
              "While initializing the host for the 'Quorix.WrpGen.Interop.ExchangeHost (Assembly=WrpInterop.Quorix."
              "Folio)' type, an error occurred - Method 'BoxStcTarget' not found (error=-2147024894)");
    void* slot = reinterpret_cast<void*>(1);
    std::string error;
    EXPECT_FALSE(bind_managed_method(nullptr, "A", "T", "M", &slot, &error));
    EXPECT_EQ(slot, nullptr);
    EXPECT_NE(error.find("Method 'M' not found (error="), std::string::npos);
}

TEST(DynamicLibraryLoad, ReusesAMappedCopyAndOwnsOnlyWhatItOpened) {
    // libm is mapped into every test process through libstdc++: reused, not first-loaded.
    DynamicLibrary mapped;
    ASSERT_TRUE(DynamicLibrary::try_load("libm.so.6", "libm", &mapped));
    EXPECT_FALSE(mapped.is_first_load());

    DynamicLibrary fresh;
    const char* path = std::getenv("QRX_MOCK_CORECLR");
    ASSERT_NE(path, nullptr) << "QRX_MOCK_CORECLR names the mock runtime library";
    ASSERT_TRUE(DynamicLibrary::try_load(path, "mock", &fresh));
    EXPECT_TRUE(fresh.is_first_load());

    DynamicLibrary moved(std::move(fresh));
    EXPECT_EQ(fresh.handle(), nullptr);
    EXPECT_TRUE(moved.is_first_load());
    EXPECT_TRUE(moved.free());
    EXPECT_FALSE(moved.free());

    EXPECT_FALSE(DynamicLibrary::try_load("/nonexistent/lib.so", "none", &fresh));
    EXPECT_THROW(DynamicLibrary::load("/nonexistent/lib.so", "none"), std::runtime_error);
}

}  // namespace
