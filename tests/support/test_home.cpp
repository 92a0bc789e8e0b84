// Test homes, scripted workbenches and small recording writers.
#include "support/test_home.h"

#include "commands/lifecycle.h"
#include "commands/open.h"
#include "state/settings.h"

#include <cmath>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>

namespace fs = std::filesystem;

namespace kv::test {

TempHome::TempHome(bool withSettings) {
    std::random_device rd;
    for (int attempt = 0; attempt < 100; ++attempt) {
        fs::path p = fs::temp_directory_path() / ("kv-test-" + std::to_string(rd()));
        std::error_code ec;
        if (fs::create_directory(p, ec)) {
            path_ = p.string();
            break;
        }
    }
    if (withSettings) writeText(file("SP.ini"), factorySettingsText());
}

TempHome::~TempHome() {
    std::error_code ec;
    if (!path_.empty()) fs::remove_all(path_, ec);
}

Bench::Bench(bool withSettings, ViewHost* viewHost)
    : home(withSettings), wb{st, cmd, host, viewHost ? *viewHost : views} {
    st.AppPath = home.path();
}

void Bench::start() {
    MDIForm_Load(wb);
}

void Bench::import(const std::string& path, int filterIndex) {
    host.queueFile(path, filterIndex);
    mnuOpen_Click(wb);
}

std::vector<float> Bench::working(const std::string& name) const {
    std::ifstream f(home.file(name), std::ios::binary);
    std::vector<float> v;
    float x;
    while (f.read(reinterpret_cast<char*>(&x), sizeof x))
        v.push_back(x);
    return v;
}

void writeFile(const std::string& path, const std::vector<uint8_t>& bytes) {
    std::ofstream f(path, std::ios::binary | std::ios::trunc);
    f.write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
}

void writeText(const std::string& path, const std::string& text) {
    std::ofstream f(path, std::ios::binary | std::ios::trunc);
    f << text;
}

std::string readText(const std::string& path) {
    std::ifstream f(path, std::ios::binary);
    std::stringstream ss;
    ss << f.rdbuf();
    return ss.str();
}

SourceOpener memoryOpener() {
    return [](const std::string& path) -> std::unique_ptr<ByteSource> {
        const std::string text = readText(path);
        return std::make_unique<MemoryByteSource>(std::vector<uint8_t>(text.begin(), text.end()));
    };
}

std::vector<uint8_t> wavBytes(int channels, int sampleRate, int bits,
                              const std::vector<int>& samples) {
    const int bytesPer = bits / 8;
    const uint32_t dataLen = uint32_t(samples.size() * size_t(bytesPer));
    std::vector<uint8_t> b;
    auto str = [&](const char* s) {
        for (int i = 0; i < 4; ++i)
            b.push_back(uint8_t(s[i]));
    };
    auto u32 = [&](uint32_t v) {
        for (int i = 0; i < 4; ++i)
            b.push_back(uint8_t(v >> (8 * i)));
    };
    auto u16 = [&](uint32_t v) {
        b.push_back(uint8_t(v));
        b.push_back(uint8_t(v >> 8));
    };
    str("RIFF");
    u32(36 + dataLen);
    str("WAVE");
    str("fmt ");
    u32(16);
    u16(1);
    u16(uint32_t(channels));
    u32(uint32_t(sampleRate));
    u32(uint32_t(sampleRate * channels * bytesPer));
    u16(uint32_t(channels * bytesPer));
    u16(uint32_t(bits));
    str("data");
    u32(dataLen);
    for (int s : samples) {
        if (bits == 8)
            b.push_back(uint8_t(s + 128));
        else
            u16(uint32_t(uint16_t(int16_t(s))));
    }
    return b;
}

std::vector<int> noisySine(int count) {
    std::vector<int> s;
    for (int i = 0; i < count; ++i)
        s.push_back(int(std::lround(16000 * std::sin(2 * M_PI * 1000.0 * i / 8000))) +
                    (i * 7919) % 601 - 300);
    return s;
}

std::string realData(const std::string& relative) {
    fs::path p = fs::path(KV_REAL_DATA_DIR) / relative;
    std::error_code ec;
    return fs::exists(p, ec) ? p.string() : std::string();
}

} // namespace kv::test
