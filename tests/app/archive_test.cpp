#include <ixocore/app/archive.h>

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

namespace fs = std::filesystem;

namespace
{

// A fresh directory per test, removed afterwards.
class archive_test : public ::testing::Test
{
protected:
    void SetUp() override
    {
        dir_ = fs::temp_directory_path() /
               ("ixo_archive_test_" + std::to_string(::getpid()) + "_" +
                ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::remove_all(dir_);
        fs::create_directories(dir_);
    }
    void TearDown() override { fs::remove_all(dir_); }

    std::string path(char const* name) const { return (dir_ / name).string(); }
    ixo_string wide(char const* name) const { return ixo_string::from_utf8(path(name)); }

    static void write_file(std::string const& p, std::string const& bytes)
    {
        std::ofstream(p, std::ios::binary) << bytes;
    }
    static std::string read_file(std::string const& p)
    {
        std::ifstream in(p, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), {});
    }

    fs::path dir_;
};

} // namespace

TEST_F(archive_test, open_fails_cleanly_and_takes_utf8_paths)
{
    EXPECT_EQ(ixo_archive::open(wide("missing/dir/file.bin"), ixo_archive::mode_write), nullptr);
    EXPECT_EQ(ixo_archive::open(wide("absent.bin"), ixo_archive::mode_read), nullptr);
    // Not plain files: a FIFO would block the open, a device would never end.
    std::string const fifo = (dir_ / "pipe").string();
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    EXPECT_EQ(ixo_archive::open(ixo_string::from_utf8(fifo), ixo_archive::mode_read), nullptr);
    EXPECT_EQ(ixo_archive::open(ixo_string::from_utf8(fifo), ixo_archive::mode_write), nullptr);
    EXPECT_EQ(ixo_archive::open(ixo_string::from_utf8("/dev/zero"), ixo_archive::mode_read),
              nullptr);
    EXPECT_EQ(ixo_archive::open(ixo_string(), ixo_archive::mode_read), nullptr);
    EXPECT_EQ(ixo_archive::open(ixo_string(IXO_TEXT("")), ixo_archive::mode_write), nullptr);
    // A directory cannot be opened as a file.
    EXPECT_EQ(ixo_archive::open(ixo_string::from_utf8(dir_.string()), ixo_archive::mode_write),
              nullptr);

    // Paths are UTF-8 on disk.
    auto archive =
        ixo_archive::open(wide("rotor_\xC3\xA9_\xE2\x82\xAC.bin"), ixo_archive::mode_write);
    ASSERT_NE(archive, nullptr);
    archive = nullptr;
    EXPECT_TRUE(fs::exists(path("rotor_\xC3\xA9_\xE2\x82\xAC.bin")));
}

TEST_F(archive_test, write_truncates_and_read_stops_at_the_end)
{
    write_file(path("data.bin"), std::string(20, 'z'));
    std::array<unsigned char, 8> const bytes = {1, 2, 3, 0x0A, 0x0D, 0x1A, 0, 0xFF};
    {
        auto archive = ixo_archive::open(wide("data.bin"), ixo_archive::mode_write);
        ASSERT_NE(archive, nullptr);
        EXPECT_EQ(archive->get_mode(), ixo_archive::mode_write);
        EXPECT_TRUE(archive->write(4, bytes.data()));
        EXPECT_TRUE(archive->write(4, bytes.data() + 4));
        unsigned char scratch[4];
        EXPECT_FALSE(archive->read(4, scratch));
    }
    EXPECT_EQ(fs::file_size(path("data.bin")), 8u);
    EXPECT_EQ(read_file(path("data.bin")),
              std::string(reinterpret_cast<char const*>(bytes.data()), bytes.size()));

    auto archive = ixo_archive::open(wide("data.bin"), ixo_archive::mode_read);
    ASSERT_NE(archive, nullptr);
    EXPECT_EQ(archive->get_mode(), ixo_archive::mode_read);
    // Writing to a read archive answers false and leaves the file as it is.
    EXPECT_FALSE(archive->write(4, bytes.data()));
    std::array<unsigned char, 8> back{};
    EXPECT_TRUE(archive->read(6, back.data()));
    EXPECT_TRUE(archive->read(2, back.data() + 6));
    EXPECT_EQ(back, bytes);
    // A short read at the end fails, and the archive stays failed.
    unsigned char extra[4] = {};
    EXPECT_FALSE(archive->read(1, extra));
    EXPECT_FALSE(archive->read(0, extra));
    EXPECT_EQ(fs::file_size(path("data.bin")), 8u);

    // Every byte value, written one at a time, reads back in one go.
    std::array<unsigned char, 256> all{};
    for (int i = 0; i < 256; ++i)
        all[i] = static_cast<unsigned char>(255 - i);
    {
        auto writer = ixo_archive::open(wide("all.bin"), ixo_archive::mode_write);
        ASSERT_NE(writer, nullptr);
        for (unsigned char const& b : all)
            EXPECT_TRUE(writer->write(1, &b));
    }
    EXPECT_EQ(fs::file_size(path("all.bin")), 256u);
    archive = ixo_archive::open(wide("all.bin"), ixo_archive::mode_read);
    ASSERT_NE(archive, nullptr);
    std::array<unsigned char, 256> all_back{};
    EXPECT_TRUE(archive->read(256, all_back.data()));
    EXPECT_EQ(all_back, all);
}

TEST_F(archive_test, bad_arguments_answer_false)
{
    auto writer = ixo_archive::open(wide("bad.bin"), ixo_archive::mode_write);
    ASSERT_NE(writer, nullptr);
    char const byte = 'x';
    EXPECT_FALSE(writer->write(-1, &byte));
    EXPECT_FALSE(writer->write(1, nullptr));
    EXPECT_TRUE(writer->write(0, nullptr));
    // Failed arguments do not put the stream into its failed state.
    EXPECT_TRUE(writer->write(1, &byte));
    writer = nullptr;
    EXPECT_EQ(read_file(path("bad.bin")), "x");

    // Any mode other than reading opens for output, but only mode_write may write.
    auto odd = ixo_archive::open(wide("odd.bin"), static_cast<ixo_archive::mode>(7));
    ASSERT_NE(odd, nullptr);
    EXPECT_TRUE(fs::exists(path("odd.bin")));
    EXPECT_FALSE(odd->write(1, &byte));
    char c = 0;
    EXPECT_FALSE(odd->read(1, &c));
}

TEST(archive_manager, packet_operations_are_empty)
{
    auto manager = ixo_archive_manager::create();
    ASSERT_NE(manager, nullptr);
    manager->write_packet(nullptr, nullptr);
    EXPECT_EQ(manager->read_packet(nullptr), nullptr);
    ixo_archive_manager on_stack;
    EXPECT_EQ(on_stack.read_packet(nullptr), nullptr);
}
