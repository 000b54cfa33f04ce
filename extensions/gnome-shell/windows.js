// Tells on the session bus which windows there are, and activates them: what GNOME Shell tells no
// other program under Wayland. So the launcher brings an application that runs to the front instead
// of starting it again. The session bus is the user's own: no other user's process can ask.

const NAME = 'org.tavolauncher.GnomeShell';
const PATH = '/org/tavolauncher/GnomeShell';

// ListWindows: the topmost window first. Of each: a number, WM_CLASS (instance and class), the
// application id, whether it is minimised, whether it is active. A dialog has the names of the
// window that it belongs to. No titles.
// ActivateWindows: the numbers of windows to bring forward in this order, so that the last one is
// active. A number that no window has is passed over.
const INTERFACE = `<node><interface name="${NAME}">
  <method name="ListWindows"><arg type="a(tsssbb)" direction="out" name="windows"/></method>
  <method name="ActivateWindows"><arg type="at" direction="in" name="numbers"/></method>
</interface></node>`;

class WindowsExtension {
    enable() {
        this._object = Gio.DBusExportedObject.wrapJSObject(INTERFACE, this);
        this._object.export(Gio.DBus.session, PATH);
        this._name = Gio.bus_own_name_on_connection(
            Gio.DBus.session, NAME, Gio.BusNameOwnerFlags.NONE, null, null);
    }

    disable() {
        Gio.bus_unown_name(this._name);
        this._object.unexport();
        this._object = null;
    }

    ListWindows() {
        const focused = global.display.focus_window;
        return this._windows().reverse().map(window => {
            const owner = this._owner(window);
            return [window.get_id(), owner.get_wm_class_instance() ?? '',
                owner.get_wm_class() ?? '', this._applicationId(owner), window.minimized,
                window === focused];
        });
    }

    ActivateWindows(numbers) {
        const wanted = numbers.map(number => this._windows().find(w => w.get_id() === number))
            .filter(window => window);
        const last = wanted.pop();
        for (const window of wanted) {
            if (window.minimized)
                window.unminimize();
            window.raise();
        }
        // Goes to its workspace, restores it, and closes the overview.
        if (last)
            Main.activateWindow(last, global.display.get_current_time_roundtrip());
    }

    // All windows of applications, the bottom one first. One that fades out is closed already.
    _windows() {
        const types = [Meta.WindowType.NORMAL, Meta.WindowType.DIALOG,
            Meta.WindowType.MODAL_DIALOG, Meta.WindowType.UTILITY];
        return global.get_window_actors().filter(actor => !actor.is_destroyed())
            .map(actor => actor.meta_window)
            .filter(window => !window.is_override_redirect() &&
                types.includes(window.get_window_type()));
    }

    // The window that a dialog belongs to, through any number of dialogs.
    _owner(window) {
        const parent = window.get_transient_for();
        return parent ? this._owner(parent) : window;
    }

    // Without ".desktop". The shell gives a window without a desktop entry the id "window:NUMBER".
    _applicationId(window) {
        const id = Shell.WindowTracker.get_default().get_window_app(window)?.get_id() ?? '';
        if (id.endsWith('.desktop'))
            return id.slice(0, -'.desktop'.length);
        return window.get_gtk_application_id() ?? window.get_sandboxed_app_id() ??
            window.get_wm_class() ?? '';
    }
}
