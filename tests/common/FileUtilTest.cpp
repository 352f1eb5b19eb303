#include <dataModule/common/FileUtil.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Limits.h"
#include "TemporaryDirectory.h"

namespace td {
namespace {

namespace fs = std::filesystem;
using test::FullDisk;
using test::TemporaryDirectory;

std::string nextLine(FileUtil& file) {
    char line[64] = "";
    return file.readLine(line, sizeof line) ? line : "<none>";
}

mode_t modeOf(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
}

std::string trimmed(std::string text) {
    return FileUtil::trim(text.data());
}

/// Runs `body(index)` on several threads that start together.
template <typename Body>
void runTogether(int threads, Body body) {
    std::atomic<int> waiting{threads};
    std::vector<std::thread> running;
    for (int index = 0; index < threads; ++index) {
        running.emplace_back([&, index] {
            --waiting;
            while (waiting > 0)
                std::this_thread::yield();
            body(index);
        });
    }
    for (std::thread& thread : running)
        thread.join();
}

} // namespace

TEST(FileUtilStream, AnswersFalseWhenClosed) {
    FileUtil file;
    char line[8] = "as was";
    long position = 7;
    EXPECT_FALSE(file.isOpend());
    EXPECT_FALSE(file.writeFile("text", true));
    EXPECT_FALSE(file.readLine(line, sizeof line));
    EXPECT_FALSE(file.resetStartPos());
    EXPECT_FALSE(file.setPos(0));
    EXPECT_FALSE(file.getCurrentPos(position));
    EXPECT_FALSE(file.syncFile());
    EXPECT_FALSE(file.dropReadAhead());
    EXPECT_FALSE(file.closeFile());
    EXPECT_TRUE(file.reachEnd());
    EXPECT_STREQ(line, "as was");
    EXPECT_EQ(position, 7);
}

TEST(FileUtilStream, WritesInPlaceAndReadsLines) {
    const TemporaryDirectory directory;
    const std::string path = directory.file("a.ini");
    FileUtil file;
    ASSERT_TRUE(file.createFile(path.c_str()));
    ASSERT_TRUE(file.writeFile("first\nsecond\nthird", false));
    ASSERT_TRUE(file.setPos(6));
    ASSERT_TRUE(file.writeFile("SECOND", false));
    EXPECT_EQ(directory.read("a.ini"), "first\nSECOND\nthird"); // on disk without closing

    ASSERT_TRUE(file.resetStartPos());
    char few[4];
    ASSERT_TRUE(file.readLine(few, sizeof few));
    EXPECT_STREQ(few, "fir");
    EXPECT_EQ(nextLine(file), "st\n");
    EXPECT_EQ(nextLine(file), "SECOND\n");
    long position = 0;
    ASSERT_TRUE(file.getCurrentPos(position));
    EXPECT_EQ(position, 13);
    EXPECT_EQ(nextLine(file), "third");
    EXPECT_TRUE(file.reachEnd());
    EXPECT_EQ(nextLine(file), "<none>");
    EXPECT_FALSE(file.setPos(-1));
    EXPECT_TRUE(file.closeFile());
    EXPECT_FALSE(file.isOpend());
}

TEST(FileUtilStream, MeetsTheEndOnlyByReading) {
    const TemporaryDirectory directory;
    FileUtil file;
    ASSERT_TRUE(file.openFile(directory.write("empty", "").c_str(), "r"));
    EXPECT_FALSE(file.reachEnd());
    EXPECT_EQ(nextLine(file), "<none>");
    EXPECT_TRUE(file.reachEnd());
}

TEST(FileUtilStream, ReportsWhatDidNotReachTheDisk) {
    const TemporaryDirectory directory;
    FileUtil readOnly;
    ASSERT_TRUE(readOnly.openFile(directory.write("r", "line\nnext\n").c_str(), "r"));
    EXPECT_EQ(nextLine(readOnly), "line\n");
    EXPECT_FALSE(readOnly.writeFile("text", false));
    ASSERT_TRUE(readOnly.resetStartPos());
    EXPECT_EQ(nextLine(readOnly), "line\n");

    FileUtil full;
    ASSERT_TRUE(full.openFile("/dev/full", "w"));
    EXPECT_FALSE(full.writeFile("text", false));

    FileUtil unsyncable;
    ASSERT_TRUE(unsyncable.openFile("/dev/null", "w"));
    EXPECT_FALSE(unsyncable.writeFile("text", false)); // a device that cannot be synced
    unsyncable.deferSync(true);
    EXPECT_TRUE(unsyncable.writeFile("text", false));
    EXPECT_FALSE(unsyncable.syncFile());
}

TEST(FileUtilStream, NeverWritesLaterWhatFailed) {
    const TemporaryDirectory directory;
    const std::string before(100, 'a');
    FileUtil file;
    ASSERT_TRUE(file.openFile(directory.write("f", before).c_str(), "r+"));
    EXPECT_EQ(nextLine(file), std::string(63, 'a'));
    {
        const FullDisk disk(100);
        ASSERT_TRUE(file.setPos(100));
        EXPECT_FALSE(file.writeFile("too late", false));
    }
    ASSERT_TRUE(file.setPos(98));
    EXPECT_EQ(nextLine(file), "aa");
    ASSERT_TRUE(file.setPos(0));
    EXPECT_TRUE(file.writeFile("b", false));
    EXPECT_TRUE(file.closeFile());
    EXPECT_EQ(directory.read("f"), "b" + before.substr(1));
}

TEST(FileUtilStream, KeepsToTheModesOfFopen) {
    const TemporaryDirectory directory;
    const std::string path = directory.write("f", "one\n");
    long position = 0;
    FileUtil file;
    EXPECT_FALSE(file.openFile(path.c_str(), "w+x"));
    EXPECT_FALSE(file.openFile(path.c_str(), "?"));
    ASSERT_TRUE(file.openFile(path.c_str(), "a"));
    EXPECT_TRUE(file.getCurrentPos(position) && position == 4);
    ASSERT_TRUE(file.setPos(0));
    EXPECT_TRUE(file.writeFile("two\n", false));
    EXPECT_TRUE(file.getCurrentPos(position) && position == 8);
    EXPECT_EQ(nextLine(file), "<none>");
    EXPECT_TRUE(file.readFailed()) << "it is open for writing only";
    file.closeFile();
    ASSERT_TRUE(file.openFile(path.c_str(), "a+"));
    EXPECT_FALSE(file.readFailed());
    EXPECT_EQ(nextLine(file), "one\n");
    EXPECT_TRUE(file.writeFile("three\n", false));
    EXPECT_EQ(directory.read("f"), "one\ntwo\nthree\n");
    file.closeFile();
    ASSERT_TRUE(file.openFile(path.c_str(), "wb"));
    EXPECT_EQ(directory.read("f"), "");
}

TEST(FileUtilStream, ReadsLinesOfAnyLengthAndAnyBytes) {
    const TemporaryDirectory directory;
    std::string text;
    for (int length = 0; length < 200; ++length)
        text += std::string(static_cast<std::size_t>(length), static_cast<char>(length)) + "\n"; // zero bytes too
    FileUtil file;
    ASSERT_TRUE(file.openFile(directory.write("f", text).c_str(), "r"));
    char piece[64];
    ASSERT_TRUE(file.readLine(piece, 1)) << "room for nothing";
    EXPECT_STREQ(piece, "");
    std::string read;
    for (long before = 0, after = 0; file.readLine(piece, sizeof piece); before = after) {
        ASSERT_TRUE(file.getCurrentPos(after));
        read.append(piece, static_cast<std::size_t>(after - before));
    }
    EXPECT_EQ(read, text);
    // Lines and blocks in turn, from anywhere.
    std::string block(9000, '\0');
    for (const int offset : {10000, 3, 4000, 0}) {
        ASSERT_TRUE(file.setPos(offset));
        ASSERT_TRUE(file.readLine(piece, 2));
        ASSERT_EQ(file.readBytes(block.data(), block.size()), block.size());
        EXPECT_EQ(block, text.substr(static_cast<std::size_t>(offset) + 1, block.size())) << offset;
    }
}

TEST(FileUtilStream, IsReadByOthersBesideWhatItDoes) {
    const TemporaryDirectory directory;
    FileUtil file;
    EXPECT_EQ(file.stream(), nullptr);
    ASSERT_TRUE(file.openFile(directory.write("f", "one\ntwo\n").c_str(), "r+"));
    EXPECT_EQ(nextLine(file), "one\n");
    FILE* const stream = file.stream();
    ASSERT_NE(stream, nullptr);
    EXPECT_EQ(file.stream(), stream);
    for (const int descriptor : {file.descriptor(), fileno(stream)})
        EXPECT_NE(fcntl(descriptor, F_GETFD) & FD_CLOEXEC, 0);
    EXPECT_EQ(std::fgetc(stream), 't');
    ASSERT_TRUE(file.writeFile("TWO", false));
    EXPECT_EQ(std::fgetc(stream), 'W') << "as it is now, and at a place of its own";
    EXPECT_TRUE(file.closeFile());
    EXPECT_EQ(file.stream(), nullptr);
}

TEST(FileUtilStream, NeverWaitsForTheOtherEndOfAFifo) {
    const TemporaryDirectory directory;
    const std::string fifo = directory.file("fifo");
    const std::string to = directory.file("to");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    for (const char* mode : {"r", "r+", "w", "w+", "a"})
        EXPECT_FALSE(FileUtil().openFile(fifo.c_str(), mode)) << mode;
    EXPECT_FALSE(FileUtil().createFile(fifo.c_str()));
    EXPECT_FALSE(FileUtil().openFile(directory.string().c_str(), "r"));
    EXPECT_EQ(FileUtil::copySingleFile(fifo.c_str(), to.c_str()), -1);
    EXPECT_EQ(FileUtil::copySingleFile(directory.write("from", "text").c_str(), fifo.c_str()), -1);
    EXPECT_FALSE(FileUtil::replaceFile(fifo.c_str(), to.c_str()));
    EXPECT_FALSE(FileUtil::startsWith(fifo.c_str(), "text"));
    EXPECT_FALSE(FileUtil::overwriteStart(fifo.c_str(), "text"));
    EXPECT_FALSE(directory.exists("to"));
}

TEST(FileUtilStream, DropsWhatWasReadAhead) {
    const TemporaryDirectory directory;
    FileUtil reader;
    ASSERT_TRUE(reader.openFile(directory.write("f", "one\ntwo\n").c_str(), "r+"));
    EXPECT_EQ(nextLine(reader), "one\n");
    FileUtil writer;
    ASSERT_TRUE(writer.openFile(directory.file("f").c_str(), "r+"));
    ASSERT_TRUE(writer.writeFile("ONE\nTWO\n", false));

    ASSERT_TRUE(reader.dropReadAhead());
    EXPECT_EQ(nextLine(reader), "TWO\n");

    ASSERT_TRUE(writer.resetStartPos());
    ASSERT_TRUE(writer.writeFile("One\nTwo\n", false));
    ASSERT_TRUE(reader.dropReadAhead());
    ASSERT_TRUE(reader.resetStartPos()); // back into what was read before
    EXPECT_EQ(nextLine(reader), "One\n");
    EXPECT_EQ(nextLine(reader), "Two\n");
    EXPECT_EQ(nextLine(reader), "<none>");

    ASSERT_TRUE(writer.writeFile("Three\n", false));
    ASSERT_TRUE(reader.dropReadAhead());
    EXPECT_FALSE(reader.reachEnd());
    EXPECT_EQ(nextLine(reader), "Three\n");
}

TEST(FileUtilPath, MovesAsideWhatStandsThereUnderAFreeName) {
    const TemporaryDirectory directory;
    const std::string stray = directory.file("f");
    std::string aside;
    for (int number = 1; number <= 3; ++number) {
        fs::create_symlink(directory.write("other", "kept"), stray);
        ASSERT_TRUE(FileUtil::moveAside(stray.c_str(), aside));
        EXPECT_EQ(aside, stray + FileUtil::STRAY_SUFFIX + std::to_string(number));
        EXPECT_TRUE(fs::is_symlink(aside));
        EXPECT_FALSE(fs::is_symlink(stray));
    }
    EXPECT_EQ(directory.read("other"), "kept");
    EXPECT_FALSE(FileUtil::moveAside(stray.c_str(), aside)) << "nothing is there any more";
}

TEST(FileUtilPath, MakesOneDirectory) {
    const TemporaryDirectory directory;
    const std::string made = directory.file("made");
    EXPECT_FALSE(FileUtil::checkPath(made.c_str(), false));
    EXPECT_TRUE(FileUtil::checkPath(made.c_str(), true));
    EXPECT_TRUE(FileUtil::checkPath(made.c_str(), false));
    EXPECT_FALSE(FileUtil::checkPath(directory.file("missing/below").c_str(), true));
}

TEST(FileUtilPath, FindsTheDirectoryThatAnotherThreadMade) {
    const TemporaryDirectory directory;
    for (int round = 0; round < 50; ++round) {
        const std::string path = directory.file("round" + std::to_string(round));
        std::atomic<int> found{0};
        runTogether(4, [&](int) { found += FileUtil::checkPath(path.c_str(), true) ? 1 : 0; });
        ASSERT_EQ(found, 4);
    }
}

TEST(FileUtilPath, TellsKindsApart) {
    const TemporaryDirectory directory;
    const std::string file = directory.write("file", "12345");
    const std::string link = directory.file("link");
    fs::create_symlink(file, link);
    EXPECT_TRUE(FileUtil::isFile(file.c_str()));
    EXPECT_FALSE(FileUtil::isDir(file.c_str()));
    EXPECT_TRUE(FileUtil::isDir(directory.string().c_str()));
    EXPECT_FALSE(FileUtil::isFile(link.c_str()));
    EXPECT_FALSE(FileUtil::isDir(link.c_str()));
    EXPECT_TRUE(FileUtil::checkFile(link.c_str()));
    EXPECT_EQ(FileUtil::getFileSize(file.c_str()), 5);
    EXPECT_EQ(FileUtil::getFileSize(directory.file("missing").c_str()), -1);
    EXPECT_TRUE(FileUtil::isSpecialDir(".."));
    EXPECT_FALSE(FileUtil::isSpecialDir("..."));
}

TEST(FileUtilPath, JoinsWithinBounds) {
    char out[256];
    EXPECT_STREQ(FileUtil::getFilePath("/dir", "name", out), "/dir/name");
    EXPECT_STREQ(FileUtil::getFilePath("/dir/", "name", out), "/dir/name");
    const std::string longest = std::string(251, 'n');
    EXPECT_EQ(FileUtil::getFilePath("/di", longest.c_str(), out), "/di/" + longest); // 255 and the terminator
    EXPECT_STREQ(FileUtil::getFilePath("/dir", longest.c_str(), out), "");
}

TEST(FileUtilPath, TrimsSpacesAndLineEnds) {
    EXPECT_EQ(trimmed("  a b \r\n"), "a b");
    EXPECT_EQ(trimmed("\ta \t"), "\ta \t");
    EXPECT_EQ(trimmed(" \r\n"), "");
    EXPECT_EQ(trimmed(""), "");
}

TEST(FileUtilCopy, CopiesWholeFiles) {
    const TemporaryDirectory directory;
    const std::string content(3 * 4096 + 17, 'x');
    const std::string from = directory.write("from", content);
    const std::string to = directory.write("to", std::string(5 * 4096, 'y'));
    EXPECT_EQ(FileUtil::copySingleFile(from.c_str(), to.c_str()), 0);
    EXPECT_EQ(directory.read("to"), content);
    EXPECT_EQ(FileUtil::copySingleFile(directory.file("missing").c_str(), to.c_str()), -1);
    EXPECT_EQ(directory.read("to"), content);
}

TEST(FileUtilCopy, NeverEmptiesItsOwnSource) {
    const TemporaryDirectory directory;
    const std::string file = directory.write("file", "content");
    const std::string symbolic = directory.file("symbolic");
    const std::string hard = directory.file("hard");
    fs::create_symlink(file, symbolic);
    fs::create_hard_link(file, hard);
    for (const std::string& same : {file, symbolic, hard})
        EXPECT_EQ(FileUtil::copySingleFile(file.c_str(), same.c_str()), -1) << same;
    EXPECT_EQ(directory.read("file"), "content");
}

TEST(FileUtilCopy, CopiesADirectoryOneLevelDeep) {
    const TemporaryDirectory directory;
    directory.write("from/a", "A");
    directory.write("from/b", "B");
    directory.write("from/sub/c", "C");
    const std::string from = directory.file("from");
    fs::create_symlink(from + "/a", from + "/link");
    ASSERT_EQ(mkfifo((from + "/fifo").c_str(), 0600), 0);
    ASSERT_TRUE(FileUtil::copyDirFile(from.c_str(), directory.file("to").c_str()));
    EXPECT_EQ(directory.read("to/a"), "A");
    EXPECT_EQ(directory.read("to/b"), "B");
    EXPECT_EQ(directory.read("to/link"), "A");
    EXPECT_EQ(std::distance(fs::directory_iterator(directory.file("to")), {}), 3) << "nothing but files";
    EXPECT_FALSE(FileUtil::copyDirFile(from.c_str(), directory.file("no/parent").c_str()));
    EXPECT_FALSE(FileUtil::copyDirFile(directory.file("missing").c_str(), directory.file("to").c_str()));
    EXPECT_FALSE(FileUtil::copyDirFile(directory.file("from/a").c_str(), directory.file("to").c_str()));
}

TEST(FileUtilRemove, RemovesADirectoryWithAllInIt) {
    const TemporaryDirectory directory;
    directory.write("dir/file", "1");
    directory.write("dir/sub/sub/file", "2");
    EXPECT_EQ(FileUtil::removeDirFile(directory.file("dir").c_str()), 0);
    EXPECT_FALSE(directory.exists("dir"));
    EXPECT_EQ(FileUtil::removeDirFile(directory.write("single", "3").c_str()), 0);
    EXPECT_FALSE(directory.exists("single"));
    EXPECT_EQ(FileUtil::removeDirFile(directory.file("missing").c_str()), 0);
}

TEST(FileUtilRemove, LeavesLinksAndWhatTheyNameAlone) {
    const TemporaryDirectory directory;
    directory.write("kept/file", "1");
    fs::create_directory_symlink(directory.file("kept"), directory.file("link"));
    EXPECT_EQ(FileUtil::removeDirFile(directory.file("link").c_str()), 0);
    EXPECT_TRUE(fs::is_symlink(directory.file("link")));
    EXPECT_TRUE(directory.exists("kept/file"));
}

TEST(FileUtilRemove, SaysWhyASingleFileStays) {
    const TemporaryDirectory directory;
    EXPECT_EQ(FileUtil::removeSingleFile(directory.write("file", "1").c_str()), 0);
    EXPECT_EQ(FileUtil::removeSingleFile(directory.file("file").c_str()), -2);
    directory.write("dir/file", "2");
    EXPECT_EQ(FileUtil::removeSingleFile(directory.file("dir").c_str()), -1);
}

TEST(FileUtilRename, BackupNeverOverwritesAndRecoverAlwaysDoes) {
    const TemporaryDirectory directory;
    const std::string from = directory.write("from", "new");
    const std::string to = directory.write("to", "old");
    EXPECT_TRUE(FileUtil::backup(from.c_str(), to.c_str()));
    EXPECT_EQ(directory.read("from"), "new");
    EXPECT_EQ(directory.read("to"), "old");
    EXPECT_TRUE(FileUtil::recover(from.c_str(), to.c_str()));
    EXPECT_EQ(directory.read("to"), "new");
    EXPECT_FALSE(FileUtil::recover(from.c_str(), to.c_str())); // nothing left to recover from
    EXPECT_EQ(directory.read("to"), "new");
    EXPECT_TRUE(FileUtil::backup(to.c_str(), from.c_str()));
    EXPECT_EQ(directory.read("from"), "new");
    EXPECT_FALSE(FileUtil::backup(to.c_str(), from.c_str()));

    directory.write("tree/file", "1");
    EXPECT_TRUE(FileUtil::recover(from.c_str(), directory.file("tree").c_str()));
    EXPECT_EQ(directory.read("tree"), "new");
}

TEST(FileUtilReplace, MakesAndReplacesTheTarget) {
    const TemporaryDirectory directory;
    const std::string from = directory.write("from", "new");
    const std::string to = directory.file("to");
    ASSERT_TRUE(FileUtil::replaceFile(from.c_str(), to.c_str()));
    EXPECT_EQ(directory.read("to"), "new");
    directory.write("from", "newer");
    chmod(to.c_str(), 0440);
    ASSERT_TRUE(FileUtil::replaceFile(from.c_str(), to.c_str()));
    EXPECT_EQ(directory.read("to"), "newer");
    EXPECT_EQ(modeOf(to), 0440U);
    EXPECT_FALSE(directory.exists("to.tmp"));
}

TEST(FileUtilReplace, FailsWithoutTouchingTheTarget) {
    const TemporaryDirectory directory;
    const std::string to = directory.write("to", "old");
    const std::string large = directory.write("large", std::string(9000, 'x'));
    {
        const FullDisk disk(5000);
        EXPECT_FALSE(FileUtil::replaceFile(large.c_str(), to.c_str()));
    }
    EXPECT_FALSE(FileUtil::replaceFile(directory.file("missing").c_str(), to.c_str()));
    EXPECT_FALSE(FileUtil::replaceFile(directory.string().c_str(), to.c_str()));
    EXPECT_FALSE(FileUtil::replaceFile(large.c_str(), directory.file("no/parent").c_str()));
    EXPECT_EQ(directory.read("to"), "old");
    EXPECT_FALSE(directory.exists("to.tmp"));

    directory.write("dir/file", "kept");
    EXPECT_FALSE(FileUtil::replaceFile(large.c_str(), directory.file("dir").c_str()));
    EXPECT_EQ(directory.read("dir/file"), "kept");
    EXPECT_FALSE(directory.exists("dir.tmp"));

    const std::string tooLong = "/" + std::string(251, 'n'); // fits, but not with the suffix
    EXPECT_FALSE(FileUtil::replaceFile(large.c_str(), tooLong.c_str()));
}

TEST(FileUtilReplace, NeverWritesThroughALeftover) {
    const TemporaryDirectory directory;
    const std::string from = directory.write("from", "new");
    const std::string to = directory.write("to", "old");
    const std::string temporary = directory.file("to.tmp");
    const std::string other = directory.write("other", "kept");

    directory.write("to.tmp", "a longer leftover of an interrupted replacement");
    EXPECT_TRUE(FileUtil::replaceFile(from.c_str(), to.c_str()));
    EXPECT_EQ(directory.read("to"), "new");

    fs::create_symlink(other, temporary);
    EXPECT_TRUE(FileUtil::replaceFile(from.c_str(), to.c_str()));
    EXPECT_TRUE(FileUtil::isFile(to.c_str()));

    fs::create_hard_link(other, temporary);
    EXPECT_TRUE(FileUtil::replaceFile(from.c_str(), to.c_str()));
    EXPECT_EQ(directory.read("other"), "kept");

    EXPECT_EQ(mkfifo(temporary.c_str(), 0600), 0);
    EXPECT_TRUE(FileUtil::replaceFile(from.c_str(), to.c_str()));
    EXPECT_TRUE(FileUtil::isFile(to.c_str()));

    directory.write("to.tmp", "a source");
    EXPECT_FALSE(FileUtil::replaceFile(temporary.c_str(), to.c_str()));
    EXPECT_EQ(directory.read("to.tmp"), "a source");
    EXPECT_EQ(directory.read("to"), "new");
}

TEST(FileUtilReplace, CommitsOrRemovesTheTemporary) {
    const TemporaryDirectory directory;
    const std::string temporary = directory.write("x.tmp", "new");
    const std::string to = directory.write("x", "old");
    EXPECT_TRUE(FileUtil::commitTemporary(temporary.c_str(), to.c_str()));
    EXPECT_EQ(directory.read("x"), "new");
    EXPECT_FALSE(FileUtil::commitTemporary(temporary.c_str(), to.c_str()));

    directory.write("x.tmp", "newer");
    EXPECT_FALSE(FileUtil::commitTemporary(temporary.c_str(), directory.file("no/parent").c_str()));
    EXPECT_FALSE(directory.exists("x.tmp"));
    EXPECT_EQ(directory.read("x"), "new");
}

} // namespace td
