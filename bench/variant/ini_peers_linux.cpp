// SPDX-License-Identifier: MIT
#include "ini_peers.h"

#include <QSettings>
#include <QStringList>
#include <boost/property_tree/ini_parser.hpp>
#include <glib.h>
#include <unistd.h>

#include <map>

namespace ky::bench
{

namespace
{

std::shared_ptr<void> loadGlib(const std::string& path)
{
    GKeyFile* const file = g_key_file_new();
    g_key_file_load_from_file(file, path.c_str(), G_KEY_FILE_NONE, nullptr);
    return {file, [](void* loaded) { g_key_file_free(static_cast<GKeyFile*>(loaded)); }};
}

void saveGlib(const std::shared_ptr<void>& loaded, const std::string& path)
{
    g_key_file_save_to_file(static_cast<GKeyFile*>(loaded.get()), path.c_str(), nullptr);
}

std::shared_ptr<void> loadBoost(const std::string& path)
{
    auto tree = std::make_shared<boost::property_tree::ptree>();
    boost::property_tree::read_ini(path, *tree);
    return tree;
}

void saveBoost(const std::shared_ptr<void>& loaded, const std::string& path)
{
    boost::property_tree::write_ini(path, *static_cast<boost::property_tree::ptree*>(loaded.get()));
}

using QtValues = std::map<QString, QVariant>;

std::shared_ptr<void> loadQt(const std::string& path)
{
    // The values are copied: the object itself defers reading, and would be written back.
    const QSettings settings(QString::fromStdString(path), QSettings::IniFormat);
    auto values = std::make_shared<QtValues>();
    for (const QString& key : settings.allKeys())
        values->emplace(key, settings.value(key));
    return values;
}

void saveQt(const std::shared_ptr<void>& loaded, const std::string& path)
{
    QSettings settings(QString::fromStdString(path), QSettings::IniFormat);
    settings.clear();
    for (const auto& [key, value] : *static_cast<QtValues*>(loaded.get()))
        settings.setValue(key, value);
    settings.sync();
}

} // namespace

const std::vector<IniPeer>& iniPeers()
{
    static const std::vector<IniPeer> peers = {
        {"glib", &loadGlib, &saveGlib}, {"boost_ptree", &loadBoost, &saveBoost}, {"qt", &loadQt, &saveQt}};
    return peers;
}

void flushToDisk(std::FILE* file)
{
    std::fflush(file);
    ::fdatasync(::fileno(file));
}

} // namespace ky::bench
