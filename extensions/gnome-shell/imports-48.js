// For GNOME Shell 48, which loads an extension as a module and makes an object of its default class.
import Gio from 'gi://Gio';
import Meta from 'gi://Meta';
import Shell from 'gi://Shell';
import * as Main from 'resource:///org/gnome/shell/ui/main.js';

export {WindowsExtension as default};
