// The tables, and the one way of looking into them.
#include "catalog/definitions/OthersNames.h"

#include <algorithm>
#include <iterator>

#include "catalog/definitions/Wildcards.h"

namespace vantory {

namespace {

// clang-format off
constexpr std::string_view kOthers[] = {
    // shells, editors, terminals
    "bash*", "zsh*", "zim", "zinit*", "fish", "oh-my-*", "nushell", "tcsh*", "ksh*", "xonsh", "starship*", "atuin", "direnv",
    "vim", "vimrc*", "vim-*", "nvim*", "neovim", "lvim", "emacs*", "doom*", "spacemacs*", "nano", "micro", "helix", "kakoune", "kak", "vscode*",
    "code", "code - *", "vscodium", "cursor*", "zed", "kate*", "sublime*", "atom", "jetbrains", "tmux*", "screenrc", "byobu", "kitty",
    "alacritty", "wezterm", "ghostty", "foot", "terminator", "konsole*", "xfce4-terminal", "iterm*", "yakuake*", "guake",
    "tilix", "rio", "warp-terminal", "zellij", "screen", "org.gnome.terminal", "zprezto*", "zfunc*", "fzf*", "profile.d", "shell",
    "elvish", "powershell", "murex", "antigen", "antidote", "zplug", "zgen*", "sheldon", "liquidprompt*", "powerline", "gedit",
    "geany", "pluma", "xed", "mousepad", "kdevelop*", "eclipse", "joe", "jed", "lapce", "lite-xl", "bluefish", "code-server",
    "tilda", "sakura", "roxterm*", "termite", "terminology", "hyper", "contour", "xterm",
    // desktops, and what runs with them
    "gnome*", "gtk-*", "kde", "kde4", "kdedefaults", "kdeglobals", "kded*", "kwin*", "kglobal*", "kservices*", "ksmserver*",
    "kscreenlocker*", "plasma*", "xfce*", "lxqt", "lxsession", "lxpanel", "cinnamon*", "mate", "mate-*", "budgie*", "enlightenment",
    "sway*", "i3*", "hypr*", "river", "niri", "labwc", "wayfire*", "openbox", "fluxbox", "awesome", "bspwm", "sxhkd",
    "qtile", "xmonad", "herbstluftwm", "dwm*", "waybar", "polybar", "rofi", "wofi", "dunst", "conky", "nautilus*", "nemo*",
    "caja*", "thunar*", "dolphin*", "pcmanfm*", "autokey", "espanso", "albert", "ulauncher", "hammerspoon", "karabiner",
    "bettertouchtool", "quicksilver", "alfred", "raycast", "systemd", "dbus*", "autostart*", "environment.d", "mime*",
    "user-dirs*", "xdg-*", "applications", "desktop-directories", "file-manager", "flatpak", "snap", "dconf", "gconf",
    "glib-2.0", "gvfs*", "ibus", "fcitx*", "pulse", "pipewire", "wireplumber", "fontconfig", "xsession*", "xinit*", "xprofile",
    "x11", "local", "config", "var", "cache", "icons", "themes", "fonts", "trash*", "loginwindow*", "globalpreferences*",
    "com.apple.loginitems*", "com.apple.launch*", "com.apple.tcc", "byhost", "addressbook", "mobilesync", "clouddocs",
    "touchegg", "leftwm", "icewm*", "fvwm*", "kanshi", "mako", "mpv", "yt-dlp*", "com.apple.terminal*",
    "com.apple.symbolichotkeys*", "recently-used*", "user-places*", "qtproject*", "khotkeys*", "kdeconnect*", "android",
    "uwsm", "thumbnailers", "krunner*", "cosmic*", "spectrwm", "miracle-wm*", "xbindkeys*", "tigervnc", "ranger", "lf", "yazi",
    "mc", "feh", "zathura", "sxiv", "nsxiv", "udiskie", "topgrade*", "sunshine", "rustdesk*", "anydesk*", "com.apple.dock*",
    "com.apple.finder*", "com.apple.systemuiserver*", "com.apple.spaces*", "com.apple.security*", "pbs.plist",
    "startkderc", "startupconfig", "powerdevil*", "powermanagement*", "kcminput*", "kxkb*", "ksplash*", "kservicemenu*",
    "servicemenu*", "menus", "wayland-sessions", "xresources*", "autorandr", "screenlayout", "redshift*", "gammastep*",
    "xsettingsd", "xscreensaver", "tint2", "plank", "weston*", "pekwm", "jwm*", "ratpoison", "stumpwm*", "wmii", "eww", "ags",
    "easystroke", "libinput-gestures*", "fusuma", "input-remapper*", "keyd", "solaar", "copyq*", "kupfer", "synapse", "sddm",
    "trolltech*", "qt5ct", "qt6ct", "kvantum", "picom*",
    // tools that run what they find
    "cargo", "rustup", "go", "npm*", "nvm", "node", "node_*", "deno", "bun", "yarn", "pnpm", "volta", "pyenv", "conda", "mamba",
    "pip", "pipx", "ipython", "jupyter", "matplotlib", "rbenv", "rvm", "gem", "bundle", "asdf", "mise", "sdkman", "jenv",
    "gradle", "m2", "ivy2", "cabal", "ghcup", "stack", "opam", "luarocks", "perl5", "cpan*", "nix*", "guix", "linuxbrew",
    "homebrew", "git", "gitconfig*", "hg", "subversion", "make", "gdb*", "lldb*", "ccache", "julia", "octave", "wine*",
    "steam*", "lutris", "playonlinux", "dosbox", "docker", "podman", "containers", "vagrant*", "ansible", "terraform*",
    "minecraft", "crossover", "lazygit", "uv", "claude*", "msmtp*", "aerc",
    "virtualenvs", "composer", "perlbrew", "racket", "java", "matlab", "rstudio", "libreoffice*", "backintime", "borgmatic",
    "snapper", "chezmoi", "unison", "vifm*", "mpd", "ncmpcpp", "moc", "cmus", "youtube-dl*", "streamlink", "newsboat",
    "newsbeuter", "task", "jj", "home-manager", "pacman", "pypoetry", "ghc", "lein", "clojure", "sbt", "irb*", "pry*", "w3m", "elinks", "lynx", "isync",
    // browsers and mail
    "mozilla*", "firefox*", "librewolf", "waterfox", "floorp", "zen", "thunderbird", "google*", "chromium*", "chrome*",
    "brave*", "microsoft*", "edge", "opera*", "vivaldi*", "falkon", "epiphany", "qutebrowser", "midori", "tor", "torbrowser*", "tor-browser*", "yandex*",
    "arc", "safari", "com.apple.safari*", "evolution*", "akonadi*", "kmail*", "geary", "claws-mail", "mutt", "neomutt",
    "com.apple.mail*", "com.apple.messages*", "signal*", "telegram*", "discord*", "slack*", "element", "skype*", "zoom*",
    "offlineimap", "mbsync", "isyncrc", "vdirsyncer", "himalaya", "notmuch", "surf", "nyxt", "dillo", "links", "links2",
    "networkmanager*", "whatsapp", "purple", "hexchat", "irssi", "weechat", "nextcloud*", "owncloud*", "dropbox*", "syncthing", "onedrive",
    // keys
    "ssh*", "gnupg*", "pki", "pgp", "aws", "azure", "kube*", "gcloud", "gsutil", "gh", "glab", "hub", "rclone", "op",
    "1password*", "bitwarden*", "keepass*", "password*", "pass", "lastpass*", "dashlane*", "enpass*", "authy*", "putty",
    "vnc", "rdp", "remmina", "freerdp", "filezilla", "netrc", "authinfo*", "electrum*", "bitcoin*", "ethereum*", "monero*",
    "litecoin*", "dogecoin*", "exodus*", "ledger*", "trezor*", "atomic", "solana", "kwallet*", "seahorse", "gnome2",
    "openvpn*", "wireguard", "mullvad*", "protonvpn*", "nm-*", "vault*", "age", "sops", "step", "pam_environment", "pulse-cookie",
    "iced*", "goa-*", "heroku", "fly", "netlify", "doctl", "oci", "minikube", "helm", "boto*", "s3cfg", "restic", "borg", "duplicity",
    "mysql*", "psql*", "pgpass", "mongo*", "redis*", "xauthority", "iceauthority", "quarrywell*", "com.quarrywell*",
    "org.mozilla*", "org.chromium*", "com.google*", "com.brave*", "com.microsoft*", "com.apple.notes*",
    "com.apple.mobilesms*",
    "gopass", "mobilemeaccounts*", "keyring*", "keychain*", "wallet*", "passwd*", "credential*", "secret*", "cookie*", "token*",
    "final cut pro user data", "final cut express user data"};

constexpr std::string_view kMakers[] = {"adobe", "apple", "avid", "autodesk", "blackmagic design", "foundry", "kde.org",
                                        "kxmlgui5", "maxon", "meltytech", "red giant", "sony"};

constexpr std::string_view kPrograms[] = {
    "bin", "sbin", "libexec", "autostart", "autostart-scripts", "startup", "startup items", "startupitems", "login items",
    "applications", "systemd", "dbus-1", "exports", "launchagents", "launchdaemons", "application scripts", "services",
    "workflows", "preferencepanes", "input methods", "internet plug-ins", "quicklook", "colorpickers", "screen savers",
    "exec", "hooks", ".git", "init.d", "rc.d", "conf.d", "profile.d", "environment.d", "node_modules", "site-packages",
    "dist-packages"};

constexpr std::string_view kAdditions[] = {"scripts", "plugins", "plugin", "plug-ins", "extensions", "addons", "add-ons",
                                           "modules", "actions", "functions", "autoload", "after", "ftplugin", "lua",
                                           "applets", "servicemenus"};

constexpr std::string_view kEndings[] = {
    ".desktop", ".service", ".timer", ".socket", ".target", ".mount", ".sh", ".bash", ".zsh", ".fish", ".csh", ".ksh",
    ".profile", ".command", ".tool", ".app", ".bundle", ".framework", ".kext", ".prefpane", ".workflow", ".action", ".scpt",
    ".scptd", ".applescript", ".jxa", ".lua", ".el", ".elc", ".vim", ".pl", ".rb", ".so", ".dylib", ".exe", ".dll", ".bat",
    ".cmd", ".ps1", ".jar", ".pyc", ".pth", ".qlgenerator", ".saver", ".xpi", ".crx", ".osax", ".rules"};

// Texts that other programs run, where nothing but a backup says that they are an application's preferences.
constexpr std::string_view kScriptEndings[] = {".py", ".pyw", ".js", ".mjs", ".cjs", ".node", ".tcl", ".php",
                                               ".scm", ".nu", ".class", ".xba", ".appimage"};

// Of hidden files.
constexpr std::string_view kShellEndings[] = {"rc", "profile", "login", "logout", "env", "aliases", "inputrc"};

constexpr std::string_view kSecrets[] = {"keyring", "keychain", "wallet", "passwd", "password", "credential", "secret",
                                         "cookie", "token", "login data", "logins.json", "id_rsa", "id_ed25519"};
// clang-format on

template <std::size_t kCount>
std::string_view firstOf(const std::string_view (&names)[kCount], std::string_view component) {
  const auto* const name =
      std::ranges::find_if(names, [&](std::string_view each) { return couldBothMatch(component, each); });
  return name == std::end(names) ? std::string_view() : name->substr(0, name->find('*'));
}

template <std::size_t kCount>
bool endsInOneOf(const std::string_view (&endings)[kCount], std::string_view name) {
  return std::ranges::any_of(endings, [&](std::string_view ending) { return name.ends_with(ending); });
}

}  // namespace

// Also behind a maker's name, as in "com.apple.loginwindow.plist".
std::string_view nameOfAnotherProgram(std::string_view component) {
  const std::string_view name = firstOf(kOthers, component);
  const std::string_view own = withoutDomain(component);
  return name.empty() && own != component ? firstOf(kOthers, own) : name;
}

std::string_view withoutDomain(std::string_view name) {
  constexpr std::size_t kLongestDomain = 6;
  const auto isLetter = [](char character) { return character >= 'a' && character <= 'z'; };
  const std::size_t domain = name.find('.');
  if (domain == std::string_view::npos || domain > kLongestDomain) return name;
  if (!std::ranges::all_of(name.substr(0, domain), isLetter)) return name;
  const std::size_t maker = name.find('.', domain + 1);
  return maker == std::string_view::npos ? std::string_view() : name.substr(maker + 1);
}

bool isOfMaker(std::string_view component) {
  return !firstOf(kMakers, component).empty();
}

// A "*" alone stands for the names that the application itself gives.
std::string_view folderOfPrograms(std::string_view component) {
  return component == "*" ? std::string_view() : firstOf(kPrograms, component);
}

std::string_view folderOfAdditions(std::string_view component) {
  return component == "*" ? std::string_view() : firstOf(kAdditions, component);
}

bool isProgram(std::string_view name) {
  return endsInOneOf(kEndings, name) || (name.starts_with('.') && endsInOneOf(kShellEndings, name));
}

bool isScript(std::string_view name) {
  return endsInOneOf(kScriptEndings, name) || name.find(".so.") != std::string_view::npos;
}

bool holdsSecrets(std::string_view component) {
  return std::ranges::any_of(kSecrets,
                             [&](std::string_view word) { return component.find(word) != std::string_view::npos; });
}

}  // namespace vantory
