#!/usr/bin/python3 -W ignore
"""Makes the pictures of the README and of the guides from the running program.

    tools/readme_pictures.py PROGRAM FOLDER

Starts the program on a private desktop with a compositor, a settings portal and made-up
applications, and writes launcher-light.png, search-light.png, menu-light.png and editor-light.png,
and launcher-dark.png and editor-dark.png. Needs what the tests need: tools/packages.sh headless test.
"""

import os
import pathlib
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path[:0] = [str(ROOT / "tools"), str(ROOT / "tests/desktop")]

import settings_portal  # noqa: E402
from harness import Desktop, Launcher, Store, child_of, wait_until  # noqa: E402

SIZE = (1060, 720)

# The grounds that the window stands on: from the top left corner to the bottom right one.
GROUNDS = {"light": ("#bcd9f7", "#f2d6e4"), "dark": ("#1c2b3a", "#2d1b3d")}
SCHEMES = {"light": settings_portal.LIGHT, "dark": settings_portal.DARK}

# Name, what its icon shows (a drawing in a square of 64), and the two colours of its ground.
APPLICATIONS = {
    "Agenda": ("<rect x='18' y='15' width='28' height='34' rx='4'/>"
               "<path d='M24 25h16M24 32h16M24 39h10' class='line'/>", "#5ac8fa", "#0a7cff"),
    "Archivio": ("<path d='M14 22h36v-6H14zM17 25h30v23H17z'/><path d='M27 32h10' class='line'/>",
                 "#34c759", "#00a2c7"),
    "Blocco note": ("<path d='M18 14h28v36H18z'/><path d='M24 23h16M24 30h16M24 37h16' class='line'/>",
                    "#ffd60a", "#ff9f0a"),
    "Calcolatrice": ("<rect x='17' y='13' width='30' height='38' rx='5'/>"
                     "<path d='M23 22h18M24 33h2M31 33h2M38 33h2M24 42h2M31 42h2M38 42h2' "
                     "class='line'/>", "#8e8e93", "#48484a"),
    "Calendario": ("<rect x='14' y='16' width='36' height='33' rx='5'/>"
                   "<path d='M14 26h36M23 12v7M41 12v7M24 35h4M36 35h4' class='line'/>",
                   "#ff6b5e", "#ff2d55"),
    "Codice": ("<path d='M25 22L14 32l11 10M39 22l11 10-11 10M35 18l-6 28' class='stroke'/>",
               "#5e5ce6", "#32307a"),
    "Contatti": ("<circle cx='32' cy='25' r='9'/><path d='M15 50c0-10 8-15 17-15s17 5 17 15z'/>",
                 "#ac8e68", "#6b4f33"),
    "Disegno": ("<path d='M16 48l3-11 22-22 8 8-22 22z'/>", "#ff9f0a", "#ff375f"),
    "Editor": ("<path d='M16 20h32M16 30h24M16 40h28' class='stroke'/>", "#30d158", "#0b8f6a"),
    "Foto": ("<circle cx='32' cy='32' r='8'/><circle cx='32' cy='16' r='6'/>"
             "<circle cx='48' cy='32' r='6'/><circle cx='32' cy='48' r='6'/>"
             "<circle cx='16' cy='32' r='6'/>", "#bf5af2", "#5e5ce6"),
    "Giochi": ("<path d='M14 26h36a6 6 0 0 1 6 6v4a8 8 0 0 1-15 4H23a8 8 0 0 1-15-4v-4a6 6 0 0 1 "
               "6-6z'/><path d='M17 33h8M21 29v8M42 31h2M46 35h2' class='line'/>",
               "#64d2ff", "#5e5ce6"),
    "Impostazioni": ("<path d='M14 22h36M14 32h36M14 42h36' class='stroke'/>"
                     "<circle cx='25' cy='22' r='5'/><circle cx='41' cy='32' r='5'/>"
                     "<circle cx='21' cy='42' r='5'/>", "#98989d", "#545456"),
    "Mappe": ("<path d='M32 12a14 14 0 0 1 14 14c0 10-14 26-14 26S18 36 18 26a14 14 0 0 1 14-14z'/>"
              "<circle cx='32' cy='26' r='5' class='hole'/>", "#34c759", "#0a84ff"),
    "Messaggi": ("<path d='M32 15c11 0 19 6 19 15s-8 15-19 15l-4-.4L18 51l2-9c-4-3-7-7-7-12 0-9 8-15 "
                 "19-15z'/>", "#5ff27a", "#0bbd3b"),
    "Monitor": ("<path d='M12 34h10l5-14 8 26 6-18 3 6h8' class='stroke'/>", "#3a3a3c", "#1c1c1e"),
    "Musica": ("<path d='M26 44V18l22-4v26' class='stroke'/><circle cx='21' cy='44' r='6'/>"
               "<circle cx='43' cy='40' r='6'/>", "#ff5e7e", "#ff2d55"),
    "Orologio": ("<circle cx='32' cy='32' r='19'/><path d='M32 20v12l8 6' class='line'/>",
                 "#48484a", "#1c1c1e"),
    "Posta": ("<rect x='12' y='18' width='40' height='28' rx='5'/>"
              "<path d='M14 21l18 14 18-14' class='line'/>", "#5ac8fa", "#0a60ff"),
    "Presentazioni": ("<rect x='12' y='15' width='40' height='26' rx='3'/>"
                      "<path d='M32 41v9M24 51h16' class='stroke'/>", "#ffb340", "#ff7a00"),
    "Promemoria": ("<circle cx='19' cy='21' r='4'/><circle cx='19' cy='32' r='4'/>"
                   "<circle cx='19' cy='43' r='4'/><path d='M29 21h20M29 32h20M29 43h20' "
                   "class='stroke'/>", "#ff8a65", "#e8453c"),
    "Registratore": ("<rect x='26' y='12' width='12' height='24' rx='6'/>"
                     "<path d='M19 30c0 17 26 17 26 0M32 43v8' class='stroke'/>",
                     "#ff453a", "#a3123f"),
    "Terminale": ("<path d='M16 22l10 9-10 9M31 42h17' class='stroke'/>", "#3a3a3c", "#121214"),
    "Traduttore": ("<path d='M14 20h22M25 15v5M19 38c8-3 12-10 13-18M20 26c2 6 8 10 13 12' "
                   "class='stroke'/><path d='M35 50l8-19 8 19M38 44h10' class='stroke'/>",
                   "#40c8e0", "#0071a4"),
    "Video": ("<rect x='11' y='19' width='29' height='26' rx='5'/><path d='M43 28l11-7v22l-11-7z'/>",
              "#5ac8fa", "#34c759"),
}

CATEGORIES = [
    {"id": "work", "name": "Lavoro"},
    {"id": "projects", "name": "Progetti", "parentID": "work"},
    {"id": "north", "name": "Cliente Nord", "parentID": "projects"},
    {"id": "creative", "name": "Creatività"},
    {"id": "utility", "name": "Utility"},
]
RULES = {"work": "codice, terminale, posta", "projects": "presentazioni, promemoria",
         "creative": "foto, disegno, video", "utility": "calcolatrice, orologio"}
FAVORITES = ("Calendario", "Codice", "Musica", "Terminale")


def icon(drawing, first, second):
    return ("<svg xmlns='http://www.w3.org/2000/svg' width='64' height='64' viewBox='0 0 64 64'>"
            "<defs><linearGradient id='ground' x1='0.2' y1='0' x2='0.8' y2='1'>"
            f"<stop offset='0' stop-color='{first}'/><stop offset='1' stop-color='{second}'/>"
            "</linearGradient></defs>"
            "<rect width='64' height='64' rx='15' fill='url(#ground)'/><g fill='#fff'>"
            + drawing.replace("class='line'", f"fill='none' stroke='{second}' stroke-width='3' "
                              "stroke-linecap='round' stroke-linejoin='round'")
                     .replace("class='stroke'", "fill='none' stroke='#fff' stroke-width='4' "
                              "stroke-linecap='round' stroke-linejoin='round'")
                     .replace("class='hole'", f"fill='{second}'")
            + "</g></svg>")


def furnish(desktop):
    """Applications, their icons, the user's categories and favourites, and a font for screens."""
    theme = desktop.data / "icons/hicolor"
    (theme / "scalable/apps").mkdir(parents=True)
    (theme / "index.theme").write_text(
        "[Icon Theme]\nName=Hicolor\nDirectories=scalable/apps\n\n[scalable/apps]\nSize=64\n"
        "Type=Scalable\nMinSize=1\nMaxSize=512\nContext=Applications\n")
    paths = {}
    for name, (drawing, first, second) in APPLICATIONS.items():
        id = name.replace(" ", "-")
        (theme / f"scalable/apps/{id}.svg").write_text(icon(drawing, first, second))
        paths[name] = str(desktop.entry(name, id=id, Icon=id))
    desktop.store.write(Store.CATEGORIES, CATEGORIES)
    desktop.store.write(Store.RULES, RULES)
    desktop.store.write(Store.FAVORITES, [paths[name] for name in FAVORITES])
    fonts = pathlib.Path(desktop.environment["FONTCONFIG_FILE"])
    fonts.write_text(fonts.read_text().replace(">DejaVu Sans<", ">Inter<"))


def composite(desktop, look):
    """A ground to stand on, and what blends the window with it."""
    ground = desktop.folder / "ground.png"
    first, second = GROUNDS[look]
    width, height = SIZE
    desktop.run("convert", "-size", f"{width}x{height}", "-define", "gradient:angle=125",
                f"gradient:{first}-{second}", ground)
    # As a window: what is painted on the root goes when its painter does.
    desktop.start(["display", "-backdrop", "-immutable", "-borderwidth", "0", ground], log="ground.log")
    wait_until(lambda: "Backdrop" in desktop.run("wmctrl", "-l"), "the ground")
    desktop.run("wmctrl", "-r", "Backdrop", "-b", "add,below,fullscreen")
    desktop.start(["picom", "--backend", "xrender", "--config", "/dev/null", "--shadow",
                   "--shadow-radius", "24", "--shadow-opacity", "0.35",
                   "--shadow-offset-x", "-24", "--shadow-offset-y", "-14",
                   # So that it leaves no gap between the shadow and the window's round corners.
                   "--corner-radius", "18", "--rounded-corners-exclude", "name = 'Backdrop'"],
                  log="picom.log")
    wait_until(lambda: "picom" in desktop.run("xwininfo", "-root", "-tree"), "the compositor")


def take(desktop, path, part=None):
    """The screen, or a part of it as "WIDTHxHEIGHT+X+Y", once two pictures in a row are the same."""
    last = [b""]

    def unchanged():
        before, last[0] = last[0], desktop.screenshot(path).read_bytes()
        return before == last[0]

    wait_until(unchanged, "the picture to come to rest", pause=0.3)
    # Smaller, and without the time and the place of its making.
    desktop.run("convert", path, "-strip", *(["-crop", part, "+repage"] if part else []),
                "-define", "png:compression-level=9", path)
    print(path)


def show_in_use(desktop, launcher, folder, look):
    """The search in a category, and the menu of an application with the categories open."""
    desktop.type("cat:utility")
    launcher.await_tiles(["Calcolatrice", "Orologio"])
    take(desktop, folder / f"search-{look}.png", "760x250+20+20")
    desktop.key("Escape")
    launcher.await_equal(launcher.footer, f"{len(APPLICATIONS)} app")
    desktop.click(launcher.await_node("list item", "Apri Disegno"), button=3)
    desktop.point_at(child_of(launcher.await_menu("Disegno"), "Categorie"))
    launcher.await_node("menu item", "Cliente Nord")
    take(desktop, folder / f"menu-{look}.png", "580x270+256+250")
    desktop.key("Escape", "Escape")
    launcher.await_no_menu()
    desktop.move_pointer(SIZE[0] - 1, SIZE[1] - 1)


def show(program, folder, look):
    with Desktop(size=SIZE, wm="openbox") as desktop:
        furnish(desktop)
        composite(desktop, look)
        # Out of the way: a tile under the pointer shows its star.
        desktop.xdo("mousemove", SIZE[0] - 1, SIZE[1] - 1)
        values = {settings_portal.COLOR_SCHEME: SCHEMES[look]}
        address = desktop.environment["DBUS_SESSION_BUS_ADDRESS"]
        with settings_portal.SettingsPortal(address, values):
            launcher = Launcher(desktop, desktop.start([program], desktop.hermetic))
            launcher.await_node("list", "App")
            launcher.await_active()
            launcher.await_equal(launcher.footer, f"{len(APPLICATIONS)} app")
            take(desktop, folder / f"launcher-{look}.png")
            if look == "light":
                show_in_use(desktop, launcher, folder, look)
            launcher.press("push button", "Modifica categorie")
            launcher.await_node("dialog", "Modifica categorie")
            take(desktop, folder / f"editor-{look}.png")


def main(program, folder):
    folder.mkdir(parents=True, exist_ok=True)
    for look in GROUNDS:
        # A process each: one process can read one desktop's accessibility bus.
        child = os.fork()
        if child == 0:
            show(program, folder, look)
            os._exit(0)
        if os.waitpid(child, 0)[1] != 0:
            return 1
    return 0


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    os.umask(0o022)
    sys.exit(main(pathlib.Path(sys.argv[1]).absolute(), pathlib.Path(sys.argv[2]).absolute()))
