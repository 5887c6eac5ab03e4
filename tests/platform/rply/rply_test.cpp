#include <ixocore/platform/rply.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <tuple>
#include <unistd.h>
#include <vector>

namespace
{

std::string write_file(std::string const& name, std::string const& bytes)
{
    auto dir = std::filesystem::temp_directory_path() / ("ixo_rply_" + std::to_string(getpid()));
    std::filesystem::create_directories(dir);
    auto path = (dir / name).string();
    std::ofstream(path, std::ios::binary).write(bytes.data(), std::streamsize(bytes.size()));
    return path;
}

template <typename T> void put(std::string& out, T value, bool big)
{
    unsigned char b[sizeof(T)];
    std::memcpy(b, &value, sizeof(T));
    for (std::size_t i = 0; i < sizeof(T); ++i)
        out.push_back(char(b[big ? sizeof(T) - 1 - i : i]));
}

struct call
{
    long instance, length, value_index, idata;
    double value;
};

int record(p_ply_argument a)
{
    void* p = nullptr;
    call c{};
    ply_get_argument_user_data(a, &p, &c.idata);
    ply_get_argument_element(a, nullptr, &c.instance);
    ply_get_argument_property(a, nullptr, &c.length, &c.value_index);
    c.value = ply_get_argument_value(a);
    static_cast<std::vector<call>*>(p)->push_back(c);
    return 1;
}

std::vector<std::string> messages;
void keep_message(p_ply, const char* m)
{
    messages.push_back(m);
}

const char* const header_body =
    "comment first comment\nobj_info scanner 7\ncomment second\n"
    "element thing 2\n"
    "property char a\nproperty uchar b\nproperty short c\nproperty ushort d\n"
    "property int e\nproperty uint f\nproperty float g\nproperty double h\n"
    "property int8 i\nproperty uint8 j\nproperty int16 k\nproperty uint16 l\n"
    "property int32 m\nproperty uint32 n\nproperty float32 o\nproperty float64 p\n"
    "property list uint16 int8 q\n"
    "element skipped 1\nproperty list uint32 double r\nproperty float s\n"
    "end_header\n";

// The two instances of "thing": every scalar type at its extremes, and a short list.
std::string data_for(const char* mode)
{
    std::string m = mode;
    std::string s = "ply\nformat " + m + " 1.0\n" + header_body;
    if (m == "ascii")
        return s + "-128 255 -32768 65535 -2147483648 4294967295 1.5 -2.25 "
                   "-1 2 -3 4 -5 6 7.5 8.25 3 -1 0 1\n"
                   "+1 0 0 0 0 0 0 1e300 0 0 0 0 0 0 -0 nan 0\n"
                   "2 3.5 4.5 9\n";
    bool big = m == "binary_big_endian";
    auto thing = [&](bool first)
    {
        put<std::int8_t>(s, first ? -128 : 1, big);
        put<std::uint8_t>(s, first ? 255 : 0, big);
        put<std::int16_t>(s, first ? -32768 : 0, big);
        put<std::uint16_t>(s, first ? 65535 : 0, big);
        put<std::int32_t>(s, first ? INT32_MIN : 0, big);
        put<std::uint32_t>(s, first ? 4294967295u : 0, big);
        put<float>(s, first ? 1.5f : 0, big);
        put<double>(s, first ? -2.25 : 1e300, big);
        put<std::int8_t>(s, first ? -1 : 0, big);
        put<std::uint8_t>(s, first ? 2 : 0, big);
        put<std::int16_t>(s, first ? -3 : 0, big);
        put<std::uint16_t>(s, first ? 4 : 0, big);
        put<std::int32_t>(s, first ? -5 : 0, big);
        put<std::uint32_t>(s, first ? 6 : 0, big);
        put<float>(s, first ? 7.5f : -0.0f, big);
        put<double>(s, first ? 8.25 : NAN, big);
        put<std::uint16_t>(s, first ? 3 : 0, big);
        if (first)
            for (int v : {-1, 0, 1})
                put<std::int8_t>(s, std::int8_t(v), big);
    };
    thing(true);
    thing(false);
    put<std::uint32_t>(s, 2, big);
    put<double>(s, 3.5, big);
    put<double>(s, 4.5, big);
    put<float>(s, 9, big);
    return s;
}

} // namespace

TEST(Rply, HeaderInformation)
{
    messages.clear();
    p_ply ply =
        ply_open(write_file("info.ply", data_for("ascii")).c_str(), keep_message, 3, &messages);
    ASSERT_NE(ply, nullptr);
    EXPECT_EQ(ply_get_storage_mode(ply), PLY_DEFAULT);
    ASSERT_EQ(ply_read_header(ply), 1);
    EXPECT_EQ(ply_read_header(ply), 0); // only once
    EXPECT_EQ(ply_get_storage_mode(ply), PLY_ASCII);

    std::vector<std::string> comments;
    for (const char* c = ply_get_next_comment(ply, nullptr); c; c = ply_get_next_comment(ply, c))
        comments.push_back(c);
    EXPECT_EQ(comments, (std::vector<std::string>{"first comment", "second"}));
    EXPECT_STREQ(ply_get_next_obj_info(ply, nullptr), "scanner 7");

    p_ply_element e = ply_get_next_element(ply, nullptr);
    const char* name = nullptr;
    long count = 0;
    ASSERT_EQ(ply_get_element_info(e, &name, &count), 1);
    EXPECT_STREQ(name, "thing");
    EXPECT_EQ(count, 2);
    int properties = 0;
    e_ply_type type, length_type, value_type;
    for (p_ply_property p = ply_get_next_property(e, nullptr); p; p = ply_get_next_property(e, p))
    {
        ply_get_property_info(p, &name, &type, &length_type, &value_type);
        ++properties;
    }
    EXPECT_EQ(properties, 17);
    EXPECT_EQ(type, PLY_LIST);
    EXPECT_EQ(length_type, PLY_UINT16);
    EXPECT_EQ(value_type, PLY_INT8);
    e = ply_get_next_element(ply, e);
    ASSERT_EQ(ply_get_element_info(e, &name, nullptr), 1);
    EXPECT_STREQ(name, "skipped");
    EXPECT_EQ(ply_get_next_element(ply, e), nullptr);

    void* pdata = nullptr;
    long idata = 0;
    ply_get_ply_user_data(ply, &pdata, &idata);
    EXPECT_EQ(pdata, &messages);
    EXPECT_EQ(idata, 3);
    EXPECT_EQ(ply_set_read_cb(ply, "thing", "nothing", record, nullptr, 0), 0);
    EXPECT_EQ(ply_set_read_cb(ply, "nothing", "a", record, nullptr, 0), 0);
    EXPECT_EQ(ply_close(ply), 1);
    EXPECT_TRUE(messages.empty());
    EXPECT_EQ(ply_close(nullptr), 0);
}

TEST(Rply, EveryScalarTypeInEveryStorageMode)
{
    const char* props = "abcdefghijklmnop";
    const double first[16] = {
        -128, 255, -32768, 65535, -2147483648.0, 4294967295.0, 1.5, -2.25, -1, 2,
        -3,   4,   -5,     6,     7.5,           8.25};
    for (const char* mode : {"ascii", "binary_little_endian", "binary_big_endian"})
    {
        SCOPED_TRACE(mode);
        std::vector<call> scalars, list, skipped;
        p_ply ply =
            ply_open(write_file("types.ply", data_for(mode)).c_str(), keep_message, 0, nullptr);
        ASSERT_NE(ply, nullptr);
        ASSERT_EQ(ply_read_header(ply), 1);
        for (int i = 0; i < 16; ++i)
        {
            char prop[2] = {props[i], 0};
            EXPECT_EQ(ply_set_read_cb(ply, "thing", prop, record, &scalars, i), 2);
        }
        EXPECT_EQ(ply_set_read_cb(ply, "thing", "q", record, &list, 0), 2);
        EXPECT_EQ(ply_set_read_cb(ply, "skipped", "s", record, &skipped, 0), 1);
        ASSERT_EQ(ply_read(ply), 1);
        ply_close(ply);

        ASSERT_EQ(scalars.size(), 32u);
        for (int i = 0; i < 16; ++i)
        {
            EXPECT_EQ(scalars[i].idata, i);
            EXPECT_EQ(scalars[i].instance, 0);
            EXPECT_EQ(scalars[i].value, first[i]) << props[i];
            EXPECT_EQ(scalars[i].length, 1);
            EXPECT_EQ(scalars[i].value_index, 0);
        }
        EXPECT_EQ(scalars[16].value, 1);
        EXPECT_EQ(scalars[16].instance, 1);
        EXPECT_EQ(scalars[23].value, 1e300);
        EXPECT_TRUE(std::signbit(scalars[30].value));
        EXPECT_TRUE(std::isnan(scalars[31].value));

        // The list: its count (value index -1), then each entry; the empty list only its count.
        // Instance, length, value index, value:
        const std::tuple<long, long, long, double> want[] = {
            {0, 3, -1, 3}, {0, 3, 0, -1}, {0, 3, 1, 0}, {0, 3, 2, 1}, {1, 0, -1, 0}};
        ASSERT_EQ(list.size(), 5u);
        for (std::size_t i = 0; i < 5; ++i)
            EXPECT_EQ(
                std::tuple(list[i].instance, list[i].length, list[i].value_index, list[i].value),
                want[i])
                << i;

        // After a skipped list of doubles.
        ASSERT_EQ(skipped.size(), 1u);
        EXPECT_EQ(skipped[0].value, 9);
    }
}

TEST(Rply, FailuresAreReported)
{
    messages.clear();
    EXPECT_EQ(ply_open(nullptr, keep_message, 0, nullptr), nullptr);
    EXPECT_EQ(ply_open("/nonexistent/x.ply", keep_message, 0, nullptr), nullptr);
    EXPECT_EQ(ply_open(std::filesystem::temp_directory_path().c_str(), keep_message, 0, nullptr),
              nullptr);
    EXPECT_EQ(messages.size(), 3u);

    auto header_fails = [](std::string const& text)
    {
        p_ply ply = ply_open(write_file("h.ply", text).c_str(), keep_message, 0, nullptr);
        if (!ply)
            return true;
        int ok = ply_read_header(ply);
        ply_close(ply);
        return ok == 0;
    };
    std::string const ascii_v = "ply\nformat ascii 1.0\nelement v ";
    for (std::string const& bad :
         {std::string(), std::string("ply\n"), std::string("ply\nformat ascii 2.0\nend_header\n"),
          std::string("ply\nformat ascii 1.0\nproperty float x\nend_header\n"),
          ascii_v + "-1\nend_header\n", ascii_v + "1\nproperty float128 x\nend_header\n",
          ascii_v + "1\nproperty list float int x\nend_header\n",
          std::string("ply\nformat ascii 1.0\nbogus\nend_header\n"),
          "ply\nformat ascii 1.0\ncomment " + std::string(5000, 'x') + "\n"})
        EXPECT_TRUE(header_fails(bad)) << bad.substr(0, 80);
    // More instances than the file could hold.
    EXPECT_TRUE(header_fails("ply\nformat binary_little_endian 1.0\nelement v 100\n"
                             "property double x\nend_header\n" +
                             std::string(799, '\0')));
    EXPECT_FALSE(header_fails("ply\nformat binary_little_endian 1.0\nelement v 100\n"
                              "property double x\nend_header\n" +
                              std::string(800, '\0')));
    EXPECT_TRUE(header_fails("ply\nformat ascii 1.0\nelement v 100\nproperty int x\n"
                             "end_header\n1 2 3\n"));
    EXPECT_FALSE(header_fails("ply\r\nformat ascii 1.0\r\nelement v 2\r\nproperty int x\r\n"
                              "end_header\r\n1 2\r\n"));

    auto read_fails = [](std::string const& text, p_ply_read_cb cb)
    {
        p_ply ply = ply_open(write_file("r.ply", text).c_str(), keep_message, 0, nullptr);
        EXPECT_EQ(ply_read_header(ply), 1);
        std::vector<call> calls;
        ply_set_read_cb(ply, "v", "x", cb, &calls, 0);
        int ok = ply_read(ply);
        ply_close(ply);
        return ok == 0;
    };
    std::string ascii = "ply\nformat ascii 1.0\nelement v 2\nproperty uchar x\nend_header\n";
    EXPECT_FALSE(read_fails(ascii + "1 255\n", record));
    EXPECT_TRUE(read_fails(ascii + "1 256\n", record)); // out of the type's range
    EXPECT_TRUE(read_fails(ascii + "1 2.5\n", record)); // not an integer
    EXPECT_TRUE(read_fails(ascii + "1 x\n", record));
    EXPECT_TRUE(read_fails(ascii + "1 " + std::string(600, '1') + "\n", record));
    EXPECT_TRUE(read_fails(ascii + "1 2\n", [](p_ply_argument) { return 0; }));
    std::string list = "ply\nformat binary_big_endian 1.0\nelement v 1\n"
                       "property list uint32 float x\nend_header\n";
    EXPECT_TRUE(read_fails(list + std::string("\xff\xff\xff\xff\0\0\0\0", 8), record));
    EXPECT_EQ(ply_read(nullptr), 0);
    EXPECT_EQ(ply_read_header(nullptr), 0);
}

// An element without properties holds no data, whatever count the header gives it: the
// read must not walk its instances (a count near 2^63 would never finish) and must go on
// to the elements after it.
TEST(Rply, ElementWithoutPropertiesIsPassedOver)
{
    std::string const text = "ply\nformat ascii 1.0\nelement empty 8198552921648689606\n"
                             "element v 2\nproperty uchar x\nend_header\n7 9\n";
    p_ply ply = ply_open(write_file("empty.ply", text).c_str(), keep_message, 0, nullptr);
    ASSERT_NE(ply, nullptr);
    ASSERT_EQ(ply_read_header(ply), 1);
    std::vector<call> calls;
    EXPECT_EQ(ply_set_read_cb(ply, "v", "x", record, &calls, 0), 2);
    EXPECT_EQ(ply_read(ply), 1);
    ply_close(ply);
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_EQ(calls[0].value, 7);
    EXPECT_EQ(calls[1].value, 9);
}
