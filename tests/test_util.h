#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace qortest
{
// A file path unique to the running test, under the test binary's working directory.
inline std::string TempPath(const std::string& name)
{
    const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
    return std::string("tmp/") + info->test_suite_name() + "." + info->name() + "." + name;
}

inline std::vector<std::uint8_t> ReadAll(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return std::vector<std::uint8_t>(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

inline void WriteAll(const std::string& path, const std::vector<std::uint8_t>& bytes)
{
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}
} // namespace qortest
