#include <dataModule/fileOperator/FileFactorySoundPEQ.h>

#include "fileOperator/CategoryLayout.h"

namespace td {

namespace {

constexpr const char* BANDS[] = {"BAND0", "BAND1", "BAND2",  "BAND3",  "BAND4",  "BAND5",  "BAND6",  "BAND7",
                                 "BAND8", "BAND9", "BAND10", "BAND11", "BAND12", "BAND13", "BAND14", "BAND15"};

/// Says after the bands which of them are used when.
constexpr const char* COMMENT_ROWS[] = {"0--BAND0",
                                        "1--BAND1",
                                        "2--BAND2",
                                        "3--BAND3",
                                        "4--BAND4",
                                        "5--BAND5",
                                        "6--BAND6",
                                        "7--BAND7",
                                        "8--BAND8",
                                        "9--BAND9",
                                        "a--BAND10",
                                        "b--BAND11",
                                        "c--BAND12",
                                        "d--BAND13",
                                        "e--BAND14",
                                        "f--BAND15",
                                        "close sound effect using BAND0~BAND7,others using BAND8~BAND15."};

} // namespace

FileFactorySoundPEQ::FileFactorySoundPEQ() : CategoryOperator(layout()) {}

const CategoryLayout& FileFactorySoundPEQ::layout() {
    using Record = _FactorySoundPEQ_t;
    static const CategoryLayout& layout = *new const CategoryLayout{
        .category = SOUND_PEQ,
        .file = "sound_peq_factory.ini",
        .version = "v0.1",
        .purpose = "The file is used to define the sound PEQ data for factory sound",
        .dimensions = {{.name = "band",
                        .heading = "band         scope:0~15",
                        .count = 16,
                        .valueNames = BANDS,
                        .commentRows = COMMENT_ROWS}},
        .fields = {{"BandQ", &Record::bandQ}, {"BandGain", &Record::bandGain}, {"BandFreq", &Record::bandFreq}},
        .keyLine = KeyLineForm::Decimal5,
        .restoreForAllSources = {.kind = BulkRestore::Kind::PostEach},
        .restoresFromCurrent = false,
    };
    return layout;
}

} // namespace td
