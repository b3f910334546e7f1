#include "tools/writers/rvaWriter.h"

namespace ravolt {

namespace {

void writeFrame(ByteWriter &writer, std::size_t number, const RvaClip &clip) {
    const std::vector<RvaEntry> &frame = clip.frames[number];
    if (frame.size() != clip.bones.size())
        writer.fail("frame " + std::to_string(number), "entries must be as many as bones");
    for (const RvaEntry &entry : frame) {
        writer.writeFloats(entry.rotation);
        writer.writeFloats(entry.translation);
        writer.writeByte(entry.set);
    }
}

} // namespace

RvaResult encodeRva(const RvaClip &clip) {
    ByteWriter writer;
    writer.writeBytes(rva::magic.data(), rva::magic.size());
    writer.writeByte(rva::separator);
    writer.writeCount("the clip", clip.bones.size(), rvaBones, "bones");
    writer.writeCount("the clip", clip.frames.size(), rvaFrames, "frames");
    for (const std::string &bone : clip.bones)
        writer.writeText("bone '" + bone + "'", bone);
    for (std::size_t number = 0; number < clip.frames.size() && writer.ok(); ++number)
        writeFrame(writer, number, clip);
    return writer.take();
}

std::string writeRva(const std::string &path, const RvaClip &clip) {
    return writeFile(path, encodeRva(clip));
}

} // namespace ravolt
