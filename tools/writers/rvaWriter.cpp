#include "tools/writers/rvaWriter.h"

namespace ravolt {

namespace {

void putFrame(ByteWriter &writer, std::size_t number, const RvaClip &clip) {
    const std::vector<RvaEntry> &frame = clip.frames[number];
    if (frame.size() != clip.bones.size())
        writer.fail("frame " + std::to_string(number), "entries must be as many as bones");
    for (const RvaEntry &entry : frame) {
        writer.putFloats(entry.rotation);
        writer.putFloats(entry.translation);
        writer.putByte(entry.set);
    }
}

} // namespace

RvaResult encodeRva(const RvaClip &clip) {
    ByteWriter writer;
    writer.put(rva::magic.data(), rva::magic.size());
    writer.putByte(rva::separator);
    writer.putCount("the clip", clip.bones.size(), rvaBones, "bones");
    writer.putCount("the clip", clip.frames.size(), rvaFrames, "frames");
    for (const std::string &bone : clip.bones)
        writer.putText("bone '" + bone + "'", bone);
    for (std::size_t number = 0; number < clip.frames.size() && writer.ok(); ++number)
        putFrame(writer, number, clip);
    return writer.take();
}

std::string writeRva(const std::string &path, const RvaClip &clip) {
    return writeFile(path, encodeRva(clip));
}

} // namespace ravolt
