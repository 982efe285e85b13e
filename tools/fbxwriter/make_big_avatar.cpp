// Writes a large avatar animation source for benchmarks (see big_avatar.h).
//   vurl_make_big_avatar OUT.fbx [takes=10] [joints=150] [frames=300]
#include <cstdio>
#include <cstdlib>

#include "big_avatar.h"

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s OUT.fbx [takes=10] [joints=150] [frames=300]\n", argv[0]);
        return 2;
    }
    fbxwriter::BigAvatarSize size;
    if (argc > 2) size.takes = std::atoi(argv[2]);
    if (argc > 3) size.joints = std::atoi(argv[3]);
    if (argc > 4) size.frames = std::atoi(argv[4]);
    if (size.takes < 0 || size.joints < 1 || size.frames < 2) return 2;
    fbxwriter::BigAvatarCounts counts;
    const std::vector<uint8_t> bytes = fbxwriter::MakeBigAvatar(size, &counts).Bytes();
    if (!fbxwriter::SaveFile(argv[1], bytes)) {
        std::fprintf(stderr, "cannot write %s\n", argv[1]);
        return 1;
    }
    std::printf("%s: %zu bytes, %d joints, %d blend-shape channels, %d takes, %lld curves, %lld keys\n", argv[1],
                bytes.size(), size.joints, counts.blendShapeChannels, size.takes, static_cast<long long>(counts.curves),
                static_cast<long long>(counts.keys));
    return 0;
}
