// Writes the fuzzers' starting corpora: a few well-formed WAV, AIFF and CAF
// files (DIR/wave, including a short tone the script encodes to MP3 and Ogg)
// and sort CSVs (DIR/csv, the first byte choosing the columns).

#include "WaveBuilder.h"

#include <cstdio>
#include <string>

using namespace fixtures;

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s DIR\n", argv[0]);
        return 2;
    }
    const std::string dir = argv[1];
    std::vector<int> ramp;
    for (int i = 0; i < 600; ++i)
        ramp.push_back(i * 97 - 30000);
    Bytes adtl;
    putId(adtl, "adtl");
    Bytes label;
    putLe32(label, 1);
    label.insert(label.end(), {'a', 0});
    append(adtl, chunk("labl", label));
    Bytes floats;
    for (int i = 0; i < 64; ++i)
        putLe32(floats, i % 2 ? 0x3f000000u : 0xbf800000u);
    Bytes mark;
    putBe16(mark, 2);
    putBe16(mark, 1);
    putBe32(mark, 10);
    mark.insert(mark.end(), {1, 'a'});
    putBe16(mark, 2);
    putBe32(mark, 200);
    mark.insert(mark.end(), {0, 0});
    Bytes inst(8, 0);
    for (const int v : {1, 1, 2, 0, 0, 0})
        putBe16(inst, v);
    Bytes aiffData;
    for (const int v : ramp)
        putBe16(aiffData, static_cast<std::uint16_t>(v));

    const std::vector<std::pair<std::string, Bytes>> seeds = {
        {"stereo16.wav",
         riff({chunk("fmt ", fmtBody(1, 2, 48000, 16)), chunk("cue ", cueBody(2, 2)),
               chunk("LIST", adtl), chunk("smpl", smplBody(1, {{10, 99}})),
               chunk("data", pcm16(ramp))})},
        {"mono8.wav",
         riff({chunk("fmt ", fmtBody(1, 1, 8000, 8)), chunk("data", Bytes(301, 0x80))})},
        {"ext24.wav", riff({chunk("fmt ", fmtExtensible(2, 96000, 24, 24, 1)),
                            chunk("data", Bytes(6 * 40, 0x11))})},
        {"float.wav", riff({chunk("fmt ", fmtBody(3, 2, 44100, 32)), chunk("data", floats)})},
        {"odd.wav",
         riff({chunk("fmt ", fmtBody(1, 1, 48000, 16)), chunk("junk", Bytes{1, 2, 3}, false, false),
               chunk("data", pcm16(ramp))})},
        {"loops.aif",
         form("AIFF", {chunk("COMM", commBody(1, 600, 16, 44100), true), chunk("MARK", mark, true),
                       chunk("INST", inst, true), chunk("SSND", ssndBody(aiffData), true)})},
    };
    for (const auto& [name, bytes] : seeds) {
        if (!writeFile(dir + "/wave/" + name, bytes))
            return 1;
    }
    if (!writeFile(dir + "/wave/short-tone.wav",
                   wav(1, 22050, 16, sine(11025, 1, 22050, 440.0, 0.5))))
        return 1;
    // Path column 1, comment column 2 (and the header line skipped in the second).
    const std::vector<std::pair<std::string, std::string>> csvs = {
        {"plain.csv", "\x11"
                      "a.wav,first\nsub/b.wav,second\n"},
        {"header.csv", "\x51"
                       "path,comment,x\nC:\\s\\c.wav,,3\n/abs/d.mp3,\xe3\x81\x82,4\n"},
        {"bom.csv", "\x11\xef\xbb\xbf"
                    "e.ogg,comment\r\nf.aif,more\r\n"},
    };
    for (const auto& [name, text] : csvs) {
        if (!writeFile(dir + "/csv/" + name, Bytes(text.begin(), text.end())))
            return 1;
    }
    return 0;
}
