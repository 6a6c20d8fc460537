#include "stavio/web/web_assets.h"

#include "toolbox/folders.h"

#include <filesystem>
#include <system_error>

namespace stavio::web {

namespace {

const WebAsset kAssets[] = {
    {"/", "index.html", "text/html; charset=utf-8"},
    {"/index.html", "index.html", "text/html; charset=utf-8"},
    {"/page.css", "page.css", "text/css; charset=utf-8"},
    {"/page.js", "page.js", "text/javascript; charset=utf-8"},
    {"/dialog.js", "dialog.js", "text/javascript; charset=utf-8"},
    {"/score_view.js", "score_view.js", "text/javascript; charset=utf-8"},
    // The engraver is 7 MB: the server would compress it anew for every page load, which takes
    // seconds, so it goes under a JavaScript type the server does not compress.
    {"/verovio-toolkit-wasm.js", "verovio-toolkit-wasm.js", "application/x-javascript"},
};

constexpr char kPageFile[] = "index.html";

}   // namespace

std::optional<WebAsset> FindAsset(const std::string& urlPath)
{
    for (const WebAsset& asset : kAssets) {
        if (urlPath == asset.urlPath) {
            return asset;
        }
    }
    return std::nullopt;
}

std::string WebAssetFolder()
{
    const std::filesystem::path program = toolbox::ApplicationFolder();
    for (const std::filesystem::path& folder : {program / "web", program / ".." / "share" / "tamberlyne" / "web"}) {
        std::error_code error;
        if (std::filesystem::is_regular_file(folder / kPageFile, error)) {
            return std::filesystem::weakly_canonical(folder, error).string();
        }
    }
    return std::string();
}

}   // namespace stavio::web
