// Writes files with every metadata chunk and tag the metadata fuzzer reads,
// as its starting corpus.

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
    Bext bext;
    bext.description = "Door creak";
    bext.originator = "Kit";
    bext.originationDate = "2023-04-01";
    bext.timeReference = 48000;
    bext.codingHistory = "A=PCM\r\n";
    const std::string ixml =
        "<BWFXML><PROJECT>P</PROJECT><SCENE>1</SCENE><TAKE>2</TAKE><NOTE>n</NOTE><SPEED>"
        "<TIMECODE_RATE>30000/1001</TIMECODE_RATE><TIMECODE_FLAG>DF</TIMECODE_FLAG></SPEED>"
        "<USER><DESCRIPTION>d</DESCRIPTION><CATID>DOORWood</CATID><X>y</X></USER></BWFXML>";

    // ID3v2.3 with a title frame, then an MPEG frame header and an ID3v1 tag.
    Bytes mp3 = text("ID3");
    mp3.insert(mp3.end(), {3, 0, 0, 0, 0, 0, 22});
    append(mp3, text("TIT2"));
    mp3.insert(mp3.end(), {0, 0, 0, 12, 0, 0, 0});
    append(mp3, text("Glass break"));
    mp3.insert(mp3.end(), {0xff, 0xfb, 0x90, 0x64});
    mp3.resize(mp3.size() + 413, 0);
    Bytes v1 = text("TAGOld title");
    v1.resize(128, 0);
    append(mp3, v1);

    // FLAC: STREAMINFO, then a VORBIS_COMMENT block marked last.
    Bytes flac = text("fLaC");
    flac.insert(flac.end(), {0, 0, 0, 34});
    flac.insert(flac.end(), {0x10, 0, 0x10, 0, 0, 0, 0, 0, 0, 0, 0x0b, 0xb8, 0x01, 0xf0});
    flac.resize(flac.size() + 20, 0);
    Bytes comments;
    putLe32(comments, 3);
    append(comments, text("Kit"));
    putLe32(comments, 1);
    putLe32(comments, 11);
    append(comments, text("TITLE=Idle!"));
    flac.push_back(0x84);
    flac.push_back(0);
    flac.push_back(0);
    flac.push_back(static_cast<unsigned char>(comments.size()));
    append(flac, comments);

    const std::vector<std::pair<std::string, Bytes>> seeds = {
        {"bwf.wav", wavWith({chunk("bext", bextBody(bext)), chunk("iXML", text(ixml)),
                             chunk("LIST", infoList({{"INAM", "Door"}, {"ICMT", "odd"}}, false)),
                             chunk("acid", acidBody(3, 60, 8, 4, 4, 120.0f)),
                             chunk("LIST", adtlList({"Start"}, {"note"}))})},
        {"text.aif",
         aiffWith({chunk("NAME", text("Thunder"), true), chunk("ANNO", text("far"), true),
                   chunk("(c) ", text("2024"), true)})},
        {"ucs.csv", text("Category,SubCategory,CatID\nDOORS,WOOD,DOORWood\n")},
        {"DOORWood_Creak_JD_LIB.txt", text("DOORWood-Int_Creak open_JD_LIB_01")},
        {"tags.mp3", mp3},
        {"tags.flac", flac},
    };
    for (const auto& [name, bytes] : seeds) {
        if (!writeFile(dir + "/" + name, bytes))
            return 1;
    }
    return 0;
}
