// The page's files. They are served from a fixed list: a request names an entry of the list,
// never a file, so nothing in a request can reach another file on the machine.
#pragma once

#include <optional>
#include <string>

namespace stavio::web {

struct WebAsset {
    const char* urlPath;    // "/", "/page.js" ...
    const char* fileName;   // inside the asset folder
    const char* contentType;
};

// The asset for a request's path; nullopt when the list has none.
std::optional<WebAsset> FindAsset(const std::string& urlPath);

// Where the page's files are: "web" beside the program in the build tree, else
// "share/tamberlyne/web" of the installed layout (bin/..). Empty when neither holds the page.
std::string WebAssetFolder();

}   // namespace stavio::web
