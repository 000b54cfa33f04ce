// For GNOME Shell 43, which loads an extension as a script and calls init().
const {Gio, Meta, Shell} = imports.gi;
const Main = imports.ui.main;

// Called once by the shell.
function init() {
    return new WindowsExtension();
}
