#include "driver/help.h"

#include <cstdio>

namespace {
// Printed exactly as users' scripts have always seen it, including the -q line.
const char* const kHelpLines[] = {
    "Options:",
    "-h [ --help ]                         print this help",
    "-v [ --version ]                      print executable version",
    "-i [ --input ] arg                    specify the name of the file to convert",
    "-o [ --output ] arg                   Specify the name of the output glb file to save model/animation",
    "-m [ --model ] arg                    optional filename for model export",
    "-r [ --materials ] arg                optional filename for materials export",
    "-a [ --animation ] arg                optional filename for animation export",
    "-d [ --metadata ] arg                 optional filename for metadata export",
    "-g [ --scene-metadata ] arg           optional filename for scene metadata export",
    "-n [ --manifest ] arg                 optional filename for the manifest export",
    "-f [ --animation-naming ] arg         naming method for animation takes. choices are: combine, numbered, take. "
    "default is combine.",
    "-s [ --animation-start ] arg (=0)     export anim from the specified time in seconds",
    "-e [ --animation-end ] arg            export anim to the specified time in seconds (defaults to end)",
    "-b [ --cubic-curves ] arg (=false)    enable exporting cubic curves",
    "-t [ --curve-tolerance ] arg          tolerance to use for all three (position, rotation and scale) curves (0 "
    "to disable)",
    "-x [ --position-tolerance ] arg       tolerance to use when optimizing position curves in percent (0 to "
    "disable)",
    "-y [ --rotation-tolerance ] arg       tolerance to use when optimizing rotation curves in percent (0 to "
    "disable)",
    "-z [ --scale-tolerance ] arg          tolerance to use when optimizing scale curves in percent (0 to disable)",
    "-k [ --keyframe-interval ] arg (=0)   sample animation keyframes at the specified interval in seconds",
    "-p [ --pretty-print ] arg (=false)    pretty print JSON output",
    "-c [ --convert-cameras ] arg (=false) export cameras",
    "-l [ --convert-lights ] arg (=false)  export lights",
    "-u [ --unwrap-uv ] arg (=false)       generate unwrapped uv coordinates",
    "-q [ --unwrap-uv-texels-per-meter arg the size of texels required when unwrapping uv coordinates. default is "
    "16.",
    "-C [ --mesh-compress ] arg            set mesh compression method. choices are: none, draco. default is none.",
    "--draco-encode-speed arg              set draco compression encode speed. default is 0.",
    "--draco-decode-speed arg              set draco compression decode speed. default is 0.",
    "--draco-position-bits arg             set draco compression position bits. default is 11.",
    "--draco-normal-bits arg               set draco compression normal bits. default is 8.",
    "--draco-color-bits arg                set draco compression color bits. default is 8.",
    "--draco-texcoord-bits arg             set draco compression texture coordinate bits. default is 10.",
    "--draco-generic-bits arg              set draco compression generic bits. default is 8.",
};
}  // namespace

void PrintHelp() {
    for (const char* line : kHelpLines) std::printf("%s\n", line);
}
