// The conversion of a large model by `ravolt convert`, beside assimp's own export of the same file
// after the same steps:
//
//   timedConversion RAVOLT [TRIANGLES]
//
// Models are height fields, binary PLY files, one without normals and one with. assimp generates
// normals, joins equal vertices, and writes a binary glTF file. Each conversion is one of a process
// of its own, in turns; times are the minimum of the runs, of all processes that one has started.

#include <assimp/Exporter.hpp>
#include <assimp/Importer.hpp>
#include <assimp/config.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int defaultTriangles = 2000000, runs = 3;
constexpr float creaseAngle = 60; // that of `ravolt convert`
constexpr const char *exportedFile = "assimp.glb", *sceneFile = "ravolt.rve";

struct Usage {
    double seconds = 0;   // user and system time
    double megabytes = 0; // maximum of resident memory
};

// ---- The models.

template <class... Numbers> void writeNumbers(std::ofstream &file, Numbers... numbers) {
    (file.write(reinterpret_cast<const char *>(&numbers), sizeof numbers), ...);
}

float heightAt(int x, int y) {
    return 3 * std::sin(static_cast<float>(x) * 0.05f) * std::cos(static_cast<float>(y) * 0.07f);
}

void writeVertex(std::ofstream &file, int x, int y, bool normals) {
    writeNumbers(file, static_cast<float>(x), heightAt(x, y), static_cast<float>(y));
    if (!normals)
        return;
    const float slopeX = (heightAt(x + 1, y) - heightAt(x - 1, y)) / 2;
    const float slopeY = (heightAt(x, y + 1) - heightAt(x, y - 1)) / 2;
    const float length = std::sqrt(slopeX * slopeX + 1 + slopeY * slopeY);
    writeNumbers(file, -slopeX / length, 1 / length, -slopeY / length);
}

// Returns how many triangles it has, in `side` squared cells.
int writeModel(const std::string &path, int triangles, bool normals) {
    const int side = static_cast<int>(std::sqrt(triangles / 2.0)), row = side + 1;
    std::ofstream file(path, std::ios::binary);
    file << "ply\nformat binary_little_endian 1.0\nelement vertex " << row * row
         << "\nproperty float x\nproperty float y\nproperty float z\n";
    if (normals)
        file << "property float nx\nproperty float ny\nproperty float nz\n";
    file << "element face " << 2 * side * side
         << "\nproperty list uchar int vertex_indices\nend_header\n";
    for (int y = 0; y < row; ++y)
        for (int x = 0; x < row; ++x)
            writeVertex(file, x, y, normals);
    constexpr unsigned char corners = 3;
    for (int y = 0; y < side; ++y)
        for (int x = 0; x < side; ++x) {
            const std::int32_t a = y * row + x, b = a + row;
            writeNumbers(file, corners, a, b, a + 1);
            writeNumbers(file, corners, a + 1, b, b + 1);
        }
    return 2 * side * side;
}

// ---- The conversions.

int convertByRavolt(const char *tool, const std::string &model) {
    execl(tool, tool, "convert", model.c_str(), "-o", sceneFile, "--quiet", nullptr);
    std::perror(tool);
    return 1;
}

int convertByAssimp(const std::string &model) {
    Assimp::Importer importer;
    importer.SetPropertyFloat(AI_CONFIG_PP_GSN_MAX_SMOOTHING_ANGLE, creaseAngle);
    const aiScene *scene =
        importer.ReadFile(model, aiProcess_Triangulate | aiProcess_SortByPType |
                                     aiProcess_GenUVCoords | aiProcess_TransformUVCoords |
                                     aiProcess_GenSmoothNormals | aiProcess_JoinIdenticalVertices);
    if (!scene) {
        std::fprintf(stderr, "%s\n", importer.GetErrorString());
        return 1;
    }
    return Assimp::Exporter().Export(scene, "glb2", exportedFile) == aiReturn_SUCCESS ? 0 : 1;
}

// In a process of its own. Ends this one if it fails.
template <class Job> Usage measure(const Job &job) {
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0)
        _exit(job());
    int status = 0;
    rusage used = {};
    if (child < 0 || wait4(child, &status, 0, &used) < 0 || status != 0) {
        std::fprintf(stderr, "a conversion has failed\n");
        std::exit(1);
    }
    const auto seconds = [](const timeval &time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
    };
    return {seconds(used.ru_utime) + seconds(used.ru_stime),
            static_cast<double>(used.ru_maxrss) / 1024};
}

void takeMinimum(Usage &minimum, const Usage &usage) {
    if (minimum.seconds == 0 || usage.seconds < minimum.seconds)
        minimum.seconds = usage.seconds;
    minimum.megabytes = std::max(minimum.megabytes, usage.megabytes);
}

void printRow(const char *model, const char *program, const Usage &usage, const char *output) {
    std::printf("| %s | %s | %.2f s | %.0f MB | %.0f MB |\n", model, program, usage.seconds,
                usage.megabytes, static_cast<double>(std::filesystem::file_size(output)) / 1e6);
}

void compare(const char *tool, const char *name, int triangles, bool normals) {
    const std::string model = "model.ply";
    writeModel(model, triangles, normals);
    std::array<Usage, 2> used;
    for (int run = 0; run < runs; ++run) {
        takeMinimum(used[0], measure([&] { return convertByRavolt(tool, model); }));
        takeMinimum(used[1], measure([&] { return convertByAssimp(model); }));
    }
    printRow(name, "ravolt convert", used[0], sceneFile);
    printRow(name, "assimp", used[1], exportedFile);
    std::fflush(stdout);
}

} // namespace

int main(int argc, char **argv) {
    const int triangles = argc > 2 ? std::atoi(argv[2]) : defaultTriangles;
    if (argc < 2 || triangles < 2) {
        std::fprintf(stderr, "usage: timedConversion RAVOLT [TRIANGLES]\n");
        return 2;
    }
    const std::filesystem::path tool = std::filesystem::absolute(argv[1]);
    std::string folder = (std::filesystem::temp_directory_path() / "ravolt-XXXXXX").string();
    if (!mkdtemp(folder.data())) {
        std::perror(folder.c_str());
        return 1;
    }
    std::filesystem::current_path(folder);
    std::printf("| Model | Program | User and system time | Maximum of memory | File |\n"
                "|---|---|---:|---:|---:|\n");
    compare(tool.c_str(), "without normals", triangles, false);
    compare(tool.c_str(), "with normals", triangles, true);
    std::filesystem::current_path("/");
    std::filesystem::remove_all(folder);
    return 0;
}
