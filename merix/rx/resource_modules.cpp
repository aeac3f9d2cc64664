// SPDX-License-Identifier: MIT
#include "merix/rx/resource_modules.h"

#include "merix/rx/text.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>
#include <QResource>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <sstream>
#include <unordered_map>

namespace merix::rx {

namespace {

struct ResourceModule {
    QString file;
    QString prefix; ///< ":/X"
    int loads = 0;
    std::unordered_map<unsigned, std::wstring> texts;
};

std::vector<std::unique_ptr<ResourceModule>>& modules() {
    static auto* const all = new std::vector<std::unique_ptr<ResourceModule>>;
    return *all;
}

std::vector<void*>& handlesInForce() {
    static auto* const stack = new std::vector<void*>;
    return *stack;
}

ResourceModule* find(const void* resource) {
    for (const auto& module : modules()) {
        if (module.get() == resource)
            return module.get();
    }
    return nullptr;
}

/// Texts of one language over those read before.
void readTexts(ResourceModule& module, const QString& language) {
    QFile file(module.prefix + QStringLiteral("/strings/") + language + QStringLiteral(".json"));
    if (!file.open(QIODevice::ReadOnly))
        return;
    const QJsonObject texts = QJsonDocument::fromJson(file.readAll()).object();
    for (auto text = texts.begin(); text != texts.end(); ++text) {
        bool isNumber = false;
        const unsigned id = text.key().toUInt(&isNumber);
        if (isNumber && text->isString())
            module.texts[id] = text->toString().toStdWString();
    }
}

ResourceModule* loadFile(const std::filesystem::path& path) {
    auto module = std::make_unique<ResourceModule>();
    module->file = QString::fromStdString(path.string());
    module->prefix = QStringLiteral(":/") + QString::fromStdString(path.stem().string());
    if (!QResource::registerResource(module->file))
        return nullptr;
    const QString locale = QLocale().name(); // "de_AT"
    readTexts(*module, QStringLiteral("en"));
    readTexts(*module, locale.section(QLatin1Char('_'), 0, 0));
    readTexts(*module, locale);
    modules().push_back(std::move(module));
    return modules().back().get();
}

} // namespace

std::vector<std::string> resourceFolders() {
    namespace fs = std::filesystem;
    std::vector<std::string> folders;
    std::error_code failed;
    if (const fs::path program = fs::read_symlink("/proc/self/exe", failed).parent_path(); !program.empty()) {
        folders.push_back(program.string());
        folders.push_back((program.parent_path() / "lib" / "merix").string());
    }
    if (const char* more = std::getenv("MERIX_RESOURCE_PATH")) {
        std::istringstream list(more);
        for (std::string folder; std::getline(list, folder, ':');) {
            if (!folder.empty())
                folders.push_back(folder);
        }
    }
    return folders;
}

std::string resourcePrefix(const void* resource) {
    const ResourceModule* module = find(resource);
    return module ? module->prefix.toStdString() : std::string();
}

void pushResourceHandle(void* resource) {
    handlesInForce().push_back(resource);
}

void popResourceHandle() {
    if (!handlesInForce().empty())
        handlesInForce().pop_back();
}

} // namespace merix::rx

void* LoadResourceDll(const wchar_t* fileName) {
    using namespace merix::rx;
    const std::string name = toUtf8(fileName ? fileName : L"");
    if (name.empty() || name.find('/') != std::string::npos)
        return nullptr;
    for (const std::string& folder : resourceFolders()) {
        const std::filesystem::path path = std::filesystem::path(folder) / name;
        std::error_code failed;
        if (!std::filesystem::is_regular_file(path, failed))
            continue;
        ResourceModule* module = nullptr;
        for (const auto& loaded : modules()) {
            if (loaded->file == QString::fromStdString(path.string()))
                module = loaded.get();
        }
        if (!module)
            module = loadFile(path);
        if (module)
            ++module->loads;
        return module;
    }
    return nullptr;
}

bool FreeLibrary(void* resource) {
    using namespace merix::rx;
    ResourceModule* module = find(resource);
    if (!module)
        return false;
    if (--module->loads > 0)
        return true;
    QResource::unregisterResource(module->file);
    std::erase(handlesInForce(), resource);
    std::erase_if(modules(), [module](const auto& each) { return each.get() == module; });
    return true;
}

int LoadStringW(void* resource, unsigned id, wchar_t* buffer, int capacity) {
    const auto* module = merix::rx::find(resource);
    if (!buffer || capacity <= 0)
        return 0;
    buffer[0] = L'\0';
    const auto text = module ? module->texts.find(id) : decltype(module->texts.end()){};
    if (!module || text == module->texts.end())
        return 0;
    const std::size_t count = std::min(text->second.size(), static_cast<std::size_t>(capacity) - 1);
    std::copy_n(text->second.begin(), count, buffer);
    buffer[count] = L'\0';
    return static_cast<int>(count);
}

void* AfxGetResourceHandle() {
    const auto& stack = merix::rx::handlesInForce();
    return stack.empty() ? nullptr : stack.back();
}
