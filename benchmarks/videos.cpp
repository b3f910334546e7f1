// Videos: a whole video in the engine, without a texture or onto one, beside the decoder's library
// alone, without and with the upload by hand.

#include "benchScene.h"
#include "handMeshes.h"

#include "ravolt/RVTEXTURE.h"
#include "ravolt/RVVIDEO.h"

#include <GL/gl.h>
#include <benchmark/benchmark.h>

extern "C" { // missing in its headers
#include <mpeg2.h>

#include <mpeg2convert.h>
}

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace {

constexpr int width = 720, height = 576, frames = 50;
constexpr unsigned int wholeVideo = 1000000; // more steps than the video has

// The video is made by ffmpeg for as long as a benchmark runs.
class VideoFile {
  public:
    const char *const path = "bench_video.m2v";
    VideoFile() {
        std::string command = "ffmpeg -nostdin -v error -y -threads 1 -f lavfi -i testsrc2=size=";
        command += std::to_string(width) + "x" + std::to_string(height);
        command += ":rate=25 -frames:v " + std::to_string(frames);
        command += " -pix_fmt yuv420p -c:v mpeg2video -bf 2 -q:v 4 -f mpeg2video ";
        made = std::system((command + path).c_str()) == 0;
    }
    ~VideoFile() { std::remove(path); }
    VideoFile(const VideoFile &) = delete;
    VideoFile &operator=(const VideoFile &) = delete;

    bool isMade(benchmark::State &state) const {
        if (!made)
            state.SkipWithError("ffmpeg does not make the video");
        return made;
    }

  private:
    bool made;
};

// In video memory, of the video's size.
RVTEXTURE *makeTexture() {
    RVTEXTURE *texture = new RVTEXTURE;
    texture->incReferences();
    texture->setFilter(true, false, true);
    texture->create(width, height, 3);
    return texture;
}

void byEngine(benchmark::State &state, bool shown) {
    bench::startEngine(false);
    const VideoFile file;
    if (!file.isMade(state))
        return;
    RVTEXTURE *texture = makeTexture();
    RVVIDEO *video = new RVVIDEO;
    video->load(file.path);
    video->setTexture(shown ? texture : nullptr);
    for (auto _ : state) {
        video->play();
        video->update(wholeVideo); // which ends at its start
        glFinish();
    }
    state.SetItemsProcessed(state.iterations() * frames);
    video->load(nullptr);
    delete video;
    delete texture;
}

// Calls `show` with each frame and its sizes; how many there were.
template <class Show> int decode(const char *path, Show show) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE *)> file(std::fopen(path, "rb"),
                                                                std::fclose);
    const std::unique_ptr<mpeg2dec_t, void (*)(mpeg2dec_t *)> decoder(mpeg2_init(), mpeg2_close);
    const mpeg2_info_t *info = mpeg2_info(decoder.get());
    unsigned char block[4096];
    int number = 0;
    for (std::size_t size = 1; size;) {
        switch (mpeg2_parse(decoder.get())) {
        case STATE_BUFFER:
            size = std::fread(block, 1, sizeof block, file.get());
            mpeg2_buffer(decoder.get(), block, block + size);
            break;
        case STATE_SEQUENCE:
            mpeg2_convert(decoder.get(), mpeg2convert_rgb24, nullptr);
            break;
        case STATE_SLICE:
        case STATE_END:
        case STATE_INVALID_END:
            if (info->display_fbuf) {
                show(info->display_fbuf->buf[0], *info->sequence);
                ++number;
            }
            break;
        default:
            break;
        }
    }
    return number;
}

std::vector<unsigned char> pixelsOf(const RVTEXTURE &texture) {
    std::vector<unsigned char> pixels(width * height * 3);
    glBindTexture(GL_TEXTURE_2D, texture.getGLId());
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glGetTexImage(GL_TEXTURE_2D, 0, GL_RGB, GL_UNSIGNED_BYTE, pixels.data());
    return pixels;
}

// The pixels of the texture after the engine has played the video.
std::vector<unsigned char> lastPixels(const VideoFile &file, RVTEXTURE *texture) {
    RVVIDEO *video = new RVVIDEO;
    video->load(file.path);
    video->setTexture(texture);
    video->play();
    video->update(wholeVideo);
    video->load(nullptr);
    delete video;
    return pixelsOf(*texture);
}

void byLibrary(benchmark::State &state, bool shown) {
    bench::startEngine(false);
    const VideoFile file;
    if (!file.isMade(state))
        return;
    RVTEXTURE *texture = makeTexture();
    const std::vector<unsigned char> wanted = lastPixels(file, texture);
    int number = 0;
    for (auto _ : state) {
        number = decode(file.path, [=](const unsigned char *pixels, const mpeg2_sequence_t &size) {
            if (!shown)
                return;
            glBindTexture(GL_TEXTURE_2D, texture->getGLId());
            glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
            glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, static_cast<GLsizei>(size.width),
                            static_cast<GLsizei>(size.height), GL_RGB, GL_UNSIGNED_BYTE, pixels);
        });
        glFinish();
    }
    state.SetItemsProcessed(state.iterations() * frames);
    state.counters["frames"] = number;
    if (shown)
        state.counters["pictures_differ"] = bench::difference(wanted, pixelsOf(*texture));
    delete texture;
}

void engineKeeps(benchmark::State &state) { byEngine(state, false); }
void engineShows(benchmark::State &state) { byEngine(state, true); }
void libraryKeeps(benchmark::State &state) { byLibrary(state, false); }
void libraryShows(benchmark::State &state) { byLibrary(state, true); }

[[maybe_unused]] const bool registered = [] {
    const auto add = [](const char *name, void (*job)(benchmark::State &)) {
        benchmark::RegisterBenchmark(name, job)->Unit(benchmark::kMillisecond);
    };
    add("video, decoded/ravolt", engineKeeps);
    add("video, decoded/baseline", libraryKeeps);
    add("video, onto a texture/ravolt", engineShows);
    add("video, onto a texture/baseline", libraryShows);
    add("video, onto a texture, to decoding/ravolt", engineShows);
    add("video, onto a texture, to decoding/baseline", libraryKeeps);
    return true;
}();

} // namespace
