// The runtime host's platform layer: paths, joins and the folder scans that pick the runtime
// and the product assemblies.
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/host_environment.h"
#include "host/pal.h"
#include "host/utils.h"

namespace {

// A scratch directory tree removed at the end of the test.
class TempTree {
public:
    TempTree() {
        char pattern[] = "/tmp/qrx-pal-XXXXXX";
        root_ = ::mkdtemp(pattern);
    }
    ~TempTree() { std::system(("rm -rf '" + root_ + "'").c_str()); }
    const std::string& root() const { return root_; }
    std::string dir(const std::string& relative) const {
        std::string path = root_ + "/" + relative;
        std::system(("mkdir -p '" + path + "'").c_str());
        return path;
    }
    void file(const std::string& relative) const { std::ofstream(root_ + "/" + relative) << "x"; }

private:
    std::string root_;
};

TEST(PalPaths, AppendDirectoryAndRelative) {
    std::string path = "/opt/a/";
    pal::path_append(path, "b");
    EXPECT_EQ(path, "/opt/a//b");  // the separator is added even after a trailing one
    std::string empty;
    pal::path_append(empty, "b");
    EXPECT_EQ(empty, "b");
    EXPECT_EQ(pal::build_path(std::string("/r"), "netcore3.1", std::string("lib.so")), "/r/netcore3.1/lib.so");

    EXPECT_EQ(pal::path_get_directory("/usr/bin/python3"), "/usr/bin");
    EXPECT_EQ(pal::path_get_directory("python3"), "");
    EXPECT_TRUE(pal::path_is_relative("a/b"));
    EXPECT_FALSE(pal::path_is_relative("/a/b"));
}

TEST(PalPaths, Joins) {
    std::vector<std::string> list = {"/a", "b", "/a", "c"};
    EXPECT_EQ(pal::join(list, ':', false), "/a:b:/a:c");
    EXPECT_EQ(pal::join_unique(list, ':'), "/a:b:c");
    EXPECT_EQ(pal::join_to_full_path("/base", list, ';'), "/a;/base/b;/a;/base/c");
    EXPECT_EQ(pal::join({}, ':', true), "");
}

TEST(PalPaths, StringHelpers) {
    EXPECT_EQ(cxxaw_substr("netcore3.1", 7), "3.1");
    EXPECT_EQ(cxxaw_substr("netcore3.1", 7, 1), "3");
    EXPECT_EQ(cxxaw_substr("abc", 9), "");
    EXPECT_TRUE(cxxaw_isdigitstr("0123"));
    EXPECT_FALSE(cxxaw_isdigitstr(""));
    EXPECT_FALSE(cxxaw_isdigitstr("1x"));
    EXPECT_FALSE(cxxaw_isdigitstr("-1"));
}

TEST(PalEnvironment, GetenvTreatsEmptyAsMissing) {
    std::string out = "stale";
    ::setenv("QRX_TEST_VAR", "", 1);
    EXPECT_FALSE(pal::getenv("QRX_TEST_VAR", &out));
    EXPECT_EQ(out, "");
    ::setenv("QRX_TEST_VAR", "v", 1);
    EXPECT_TRUE(pal::getenv("QRX_TEST_VAR", &out));
    EXPECT_EQ(out, "v");
    ::unsetenv("QRX_TEST_VAR");
    EXPECT_EQ(pal::to_int("12abc"), 12);
    EXPECT_EQ(pal::to_int("abc"), 0);
    EXPECT_FALSE(pal::get_entry_point_exe().empty());
}

TEST(NetcoreVersionParse, AcceptsExactlyMajorDotMinor) {
    NetcoreVersion v;
    ASSERT_TRUE(try_parse("netcore3.1", &v));
    EXPECT_EQ(v.major, 3);
    EXPECT_EQ(v.minor, 1);
    ASSERT_TRUE(try_parse("netcore10.0", &v));
    EXPECT_EQ(v.major, 10);
    for (const char* name : {"netcore3.1.2", "netcore3", "netcore-3.1", "netcore3.x", "netcore.1", "netcore3.",
                             "core3.1", "Netcore3.1", "netcore"})
        EXPECT_FALSE(try_parse(name, &v)) << name;
    EXPECT_THROW(try_parse("netcore99999999999.0", &v), std::out_of_range);
    NetcoreVersion a{3, 1}, b{10, 0}, c{3, 2};
    EXPECT_TRUE(a < b);
    EXPECT_TRUE(a < c);
    EXPECT_FALSE(b < a);
}

TEST(RuntimeDiscovery, HighestFolderHoldingTheFileWins) {
    TempTree tree;
    tree.dir("netcore3.1");
    tree.dir("netcore6.0");
    tree.dir("netcore3.1.2");
    tree.file("netcore3.1/wrap.so");
    tree.file("netcore3.1.2/wrap.so");
    std::string found;
    ASSERT_TRUE(pal::get_major_netcore_path(tree.root(), "wrap.so", &found));
    EXPECT_EQ(found, tree.root() + "/netcore3.1");

    tree.dir("netcore10.0");
    tree.file("netcore10.0/wrap.so");
    tree.file("netcore6.0/wrap.so");
    ASSERT_TRUE(pal::get_major_netcore_path(tree.root(), "wrap.so", &found));
    EXPECT_EQ(found, tree.root() + "/netcore10.0");  // numeric, not alphabetical, order

    EXPECT_FALSE(pal::get_major_netcore_path(tree.root(), "absent.so", &found));
    EXPECT_FALSE(pal::get_major_netcore_path(tree.root() + "/missing", "wrap.so", &found));
}

TEST(RuntimeDiscovery, VersionBeyondInt32EndsTheScan) {
    TempTree tree;
    tree.dir("netcore99999999999.0");
    std::string found;
    try {
        pal::get_major_netcore_path(tree.root(), "wrap.so", &found);
        FAIL() << "expected std::out_of_range";
    } catch (const std::out_of_range& e) {
        EXPECT_STREQ(e.what(), "stoi");
    }
}

TEST(AssemblyFolders, ReverseListingOrderWithPygfxLast) {
    TempTree tree;
    for (const char* name : {"a", "pygfx", "b", "c"})
        tree.dir(name);
    tree.file("not-a-folder");
    std::vector<std::string> folders;
    pal::get_app_folders(tree.root(), false, &folders);
    ASSERT_EQ(folders.size(), 4u);
    EXPECT_EQ(folders.back(), tree.root() + "/pygfx");
    // whatever order readdir gives, the others are in its reverse; check as a set plus position
    std::vector<std::string> rest(folders.begin(), folders.end() - 1);
    std::sort(rest.begin(), rest.end());
    EXPECT_EQ(rest, (std::vector<std::string>{tree.root() + "/a", tree.root() + "/b", tree.root() + "/c"}));

    std::vector<std::string> with_slash;
    pal::get_app_folders(tree.root() + "/", false, &with_slash);
    EXPECT_EQ(with_slash.back(), tree.root() + "/pygfx");  // no doubled separator

    std::vector<std::string> untouched = {"keep"};
    pal::get_app_folders(tree.root() + "/missing", false, &untouched);
    EXPECT_EQ(untouched, std::vector<std::string>{"keep"});
}

TEST(AssemblyFolders, DebugModeKeepsOnlyFoldersWithADebugSubfolder) {
    TempTree tree;
    tree.dir("a/debug");
    tree.dir("b");
    tree.dir("pygfx/debug");
    std::vector<std::string> folders;
    pal::get_app_folders(tree.root(), true, &folders);
    EXPECT_EQ(folders, (std::vector<std::string>{tree.root() + "/a/debug", tree.root() + "/pygfx/debug"}));
}

TEST(AssemblyFolders, CompletionAddsTheRuntimeFolderOnce) {
    std::vector<std::string> folders = {"/x", "/rt"};
    HostEnvironment::complete_app_folders(folders, "/rt");
    EXPECT_EQ(folders.size(), 2u);
    HostEnvironment::complete_app_folders(folders, "/rt2");
    EXPECT_EQ(folders.back(), "/rt2");
}

}  // namespace
