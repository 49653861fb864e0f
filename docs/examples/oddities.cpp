// SPDX-License-Identifier: MIT
// The examples of docs/oddities.md.
#include "expect.h"

#include <ky/ky.h>

#include <fstream>
#include <string>
#include <vector>

namespace
{

using ky::kyDirUtils;
using ky::kyStringUtils;
using ky::kyVariant;
using List = kyVariant::kyVariantListImpl;
using Map = kyVariant::kyVariantMapImpl;
using Type = kyVariant::Type;

std::string lastMessage;

void remember(const std::string& message, ky::kyLogType, const std::string&, void*) { lastMessage = message; }

bool same(const std::string& found, const std::string& expected)
{
    expect(found == expected, (found + " instead of " + expected).c_str());
    return found == expected;
}

bool same(bool found, bool expected)
{
    return same(std::string(found ? "true" : "false"), expected ? "true" : "false");
}

void variants()
{
    // [variants]
    kyVariant value("text");
    value.setType(Type::Unknown);
    same(value.isNull(), false); // the text is gone, the type String stays
    value.clear();
    same(value.isNull(), true);

    same(kyVariant(kyVariant::DateTime(7)).getTypeAsString(), "NOT DEFINED");
    same(kyVariant(1000) < kyVariant(0.5), true); // every Integer before every Real
    const double one[] = {1.0, 0.0};
    const double large[] = {256.0, 0.0};
    same(kyVariant(large, 2) < kyVariant(one, 2), true); // vectors by their bytes, not by value
    // [variants]
}

void maps()
{
    // [maps]
    Map map;
    map.multiInsert("name", "a");
    map.multiInsert("name", "a"); // an equal string is swallowed
    same(map.getValue("name").toString(), "a");
    map.multiInsert("name", "b"); // now it is a string list
    map.multiInsert("name", "b"); // which keeps duplicates
    same(map.getValue("name").toString(), "a b b");

    Map tree{{"list", List{1, 2}}};
    Map flat;
    tree.toFlattenMap(flat, '/');
    same(flat.getValue("list/").toString(), "1 2"); // the elements gather under one key, without numbers

    tree.editValuePath("list/width") = 5; // writing replaces what is in the way
    same(tree.getValue("list").getTypeAsString(), "MAP");
    tree.editValuePath(nullptr) = 1;
    same(tree.contains("avoidcrashkey"), true);
    // [maps]
}

void ini()
{
    // [ini]
    Map settings;
    std::ofstream("odd.ini", std::ios::binary) << "no equals sign\n";
    ky::LoadIniFile("odd.ini", settings);
    same(lastMessage.find("Invalid line (0)") != std::string::npos, true); // lines are counted from 0

    settings.editValuePath("folder") = "C:\\new";
    ky::SaveIniFile("odd.ini", settings, false); // folder=C:\\new
    Map loaded;
    ky::LoadIniFile("odd.ini", loaded);
    same(loaded.getValue("folder").toString(), "C:\\\new"); // a backslash and a line feed
    // [ini]
}

void texts()
{
    // [texts]
    same(kyStringUtils::Split("a,b,", ',').size() == 2, true); // nothing behind the last separator
    char buffer[] = "a,b,";
    std::vector<char*> tokens;
    same(kyStringUtils::Split(buffer, ',', tokens).size() == 3, true); // but here

    same(kyStringUtils::parseBool("no"), true); // only "f", "false" and "0" are false
    same(kyVariant("no").toBool(), false);      // only "true", "True", "TRUE", "t" and "1" are true

    same(kyStringUtils::IsUUID("01234567-89ab-cdef-0123-456789abcdef"), false);
    same(kyStringUtils::IsUUID("{01234567-89ab-cdef-0123-456789abcdef}"), true);
    same(kyStringUtils::IsUUID("?01234567?89ab?cdef?0123?456789abcdef?"), true);
    // [texts]
}

void numbers()
{
    // [numbers]
    same(kyStringUtils::fromInt(-5, 4), "00-5"); // zeros in front of the sign

    kyVariant text;
    kyVariant(3.14159).convertLosslessTo(Type::String, text);
    same(text.toString(), "3.14"); // 3 digits, although nothing should be lost
    kyVariant number(7);           // of the wanted type already
    same(kyVariant("no number").convertLosslessTo(Type::Integer, number), true);
    same(number.toString(), "7");

    float scaled = 0.0F;
    char prefix = '?';
    ky::kyMathUtils::Format3Digit(0.5e-3F, scaled, prefix);
    same(prefix == 'm' && scaled == 0.0F, true); // small values are divided, too
    ky::kyMathUtils::Format3Digit(-5000.0F, scaled, prefix);
    same(prefix == ' ' && scaled == -5000.0F, true); // negative ones are left alone

    same(kyStringUtils::compareSoftwareVersion("1.2.3", "1.2") == kyStringUtils::VersionEqual, true);
    // [numbers]
}

void devices()
{
    // [devices]
    ky::kyIoDeviceMemory memory;
    ky::kyDataStream stream(&memory, ky::kyDataStream::LittleEndian);
    stream << true;
    same(memory.getData().at(0) == '\xFF', true); // not 1

    ky::kyIoDeviceSignaler signaler(nullptr, 1000);
    signaler.seekp(0, ky::kyIoDevice::SeekBegin);
    same(lastMessage, "kyIoDeviceByteCounter seekp is not supported"); // the text of its neighbour
    // [devices]
}

void csv()
{
    // [csv]
    ky::kyIoDeviceMemory memory;
    ky::kyCsvStream table(&memory, ',', '"', "\r\n");
    table << 'A' << 1234.5 << "line\nbreak" << ky::kyCsvStream::EndOfRow();
    const std::vector<char>& bytes = memory.getData();
    // A character is its number, a real has 3 digits, line breaks are not quoted, no separator behind the last row.
    same(std::string(bytes.begin(), bytes.end()), "65,1.23e+03,line\nbreak");

    ky::kyCsvFileReader reader;
    bool finished = false;
    reader.parseNext(finished, true, 0); // there is no file
    same(reader.getLastError(), "Header cell size during parsing exceed max size of 65535 characters");
    // [csv]
}

void files()
{
    // [files]
    same(kyDirUtils::ExtractFileExtension(".profile"), "");
    same(kyDirUtils::ExtractFileExtension("dir/.profile"), "profile");
    same(kyDirUtils::ExtractFolder("C:\\a\\b.txt"), "C:/a");
    std::string folder;
    std::string name;
    kyDirUtils::SplitFolderFilename("C:\\a\\b.txt", folder, name);
    same(folder, "C:\\a");
    same(kyDirUtils::GetParentPathUtf8("C:\\a\\b"), ""); // only '/' separates here
    same(kyDirUtils::MkpathUtf8(""), true);
    // [files]
}

void threads()
{
    // [threads]
    ky::kyThread thread;
    thread.startThread("odd");
    while (thread.isRunning())
        ky::kyThread::msleep(1);
    same(thread.isFinished(), false); // not joined yet
    thread.waitThread(0x7FFFFFFF);
    same(thread.isFinished(), true);

    const ky::kyTimer never(false);
    same(never.isElapsedSec(1000000), true);
    // [threads]
}

void frame()
{
    // [frame]
    ky::terminateKySystem();
    ky::terminateKySystem();                            // once too often
    ky::initializeKySystem(ky::InitType::Light, false); // levels the count
    same(ky::kyLog::editPtr() == nullptr, true);
    ky::initializeKySystem(ky::InitType::Light, false);
    same(ky::kyLog::editPtr() == nullptr, false);
    // [frame]
}

} // namespace

int main()
{
    ky::initializeKySystem(ky::InitType::Light, false);
    ky::kyLog::edit().installCustomHandler(&remember, nullptr);
    variants();
    maps();
    ini();
    texts();
    numbers();
    devices();
    csv();
    files();
    threads();
    frame();
    ky::terminateKySystem();
    return failures;
}
