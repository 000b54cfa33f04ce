// An extension of GNOME Shell for the trials: tells over the session bus what the shell knows of
// windows and panel, and types and clicks as a user does. gnome.py puts the head and the end around
// it that the version of the shell wants; Clutter, Gio, GLib, Meta, Shell and Main are known there.
const INTERFACE = `<node><interface name="org.tavolauncher.Trials">
<method name="Ask"><arg type="s" direction="in"/><arg type="s" direction="in"/>
<arg type="s" direction="out"/></method></interface></node>`;

class Answers {
    constructor() {
        const seat = Clutter.get_default_backend().get_default_seat();
        this._pointer = seat.create_virtual_device(Clutter.InputDeviceType.POINTER_DEVICE);
        this._keyboard = seat.create_virtual_device(Clutter.InputDeviceType.KEYBOARD_DEVICE);
        this._painted = {};
        this._created = global.display.connect('window-created', (display, window) => {
            const actor = window.get_compositor_private();
            actor?.connect('first-frame', () => {
                this._painted[window.get_stable_sequence()] = GLib.get_monotonic_time();
            });
        });
    }

    end() {
        global.display.disconnect(this._created);
    }

    _window(id) {
        return global.get_window_actors().map(actor => actor.meta_window)
            .find(window => window.get_stable_sequence() === id);
    }

    // From the lowest to the topmost.
    windows() {
        const ours = global.workspace_manager.get_active_workspace();
        return global.get_window_actors().map(actor => {
            const window = actor.meta_window;
            const box = window.get_frame_rect();
            return {
                key: window.get_stable_sequence(), app: window.get_wm_class() ?? '',
                title: window.get_title() ?? '', pid: window.get_pid(),
                active: window === global.display.focus_window, minimised: window.minimized,
                skips_taskbar: window.skip_taskbar, attention: window.demands_attention,
                here: window.located_on_workspace(ours),
                normal: window.window_type === Meta.WindowType.NORMAL ||
                    window.window_type === Meta.WindowType.DIALOG,
                box: [box.x, box.y, box.width, box.height],
                painted: (this._painted[window.get_stable_sequence()] ?? 0) / 1e6,
            };
        });
    }

    raise(id) {
        this._window(id).activate(global.get_current_time());
    }

    minimise(id) {
        this._window(id).minimize();
    }

    // The workspace of that number, made when it is not there.
    workspace(number) {
        const manager = global.workspace_manager;
        while (manager.get_n_workspaces() <= number)
            manager.append_new_workspace(false, global.get_current_time());
        manager.get_workspace_by_index(number).activate(global.get_current_time());
    }

    // Boxes of the items that the AppIndicator extension shows.
    items() {
        return Object.entries(Main.panel.statusArea).filter(([name]) => /appindicator/i.test(name))
            .filter(([, item]) => item.visible && item.mapped).map(([name, item]) => {
                const [x, y] = item.get_transformed_position();
                return {name, box: [x, y, item.width, item.height], open: item.menu?.isOpen ?? false};
            });
    }

    move(x, y) {
        this._pointer.notify_absolute_motion(GLib.get_monotonic_time(), x, y);
    }

    button(number, down) {
        this._pointer.notify_button(GLib.get_monotonic_time(), number,
            down ? Clutter.ButtonState.PRESSED : Clutter.ButtonState.RELEASED);
    }

    key(symbol, down) {
        this._keyboard.notify_keyval(GLib.get_monotonic_time(), symbol,
            down ? Clutter.KeyState.PRESSED : Clutter.KeyState.RELEASED);
    }

    ready() {
        if (Main.layoutManager._startingUp)
            return false;
        Main.overview.hide();
        return !Main.overview.visible;
    }
}

class Helper {
    enable() {
        // The shell's own interface for pictures answers programs that it does not know.
        global.context.unsafe_mode = true;
        this._answers = new Answers();
        this._object = Gio.DBusExportedObject.wrapJSObject(INTERFACE, {
            Ask: (name, given) =>
                JSON.stringify(this._answers[name](...JSON.parse(given)) ?? null),
        });
        this._object.export(Gio.DBus.session, '/org/tavolauncher/Trials');
    }

    disable() {
        this._object.unexport();
        this._answers.end();
    }
}
