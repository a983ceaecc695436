// SPDX-License-Identifier: Apache-2.0
/** The remote control: buttons of the page and keys of the keyboard become the same few names. @module */

/** @typedef {'up'|'down'|'left'|'right'|'ok'|'back'|'play'|'stop'|'turn'|'zoomIn'|'zoomOut'} RemoteKey */

/** By `KeyboardEvent.key`; the media names are those of televisions' own remote controls. */
const KEYS = {
  ArrowUp: 'up', ArrowDown: 'down', ArrowLeft: 'left', ArrowRight: 'right', Enter: 'ok',
  Backspace: 'back', Escape: 'back', BrowserBack: 'back', GoBack: 'back',
  ' ': 'play', MediaPlayPause: 'play', MediaPlay: 'play', MediaPause: 'play', s: 'stop', MediaStop: 'stop',
  r: 'turn', '+': 'zoomIn', '=': 'zoomIn', '-': 'zoomOut',
};

/** Here the keys have a meaning of their own. */
const OWN_KEYS = 'input, select, textarea, [role=listbox], [role=tablist], [role=log]';

/** A button that has the focus is pressed by these. */
const PRESSING = ['Enter', ' '];

function keyOf(event) {
  const {target, key} = event;
  if (event.ctrlKey || event.altKey || event.metaKey || target.closest(OWN_KEYS)) {
    return undefined;
  }
  return PRESSING.includes(key) && target.closest('button, a') ? undefined : KEYS[key];
}

/**
 * @param {HTMLElement} panel with a button for each key
 * @param {(key: RemoteKey) => void} press
 */
export function connectRemote(panel, press) {
  panel.addEventListener('click', ({target}) => {
    const key = target.closest('[data-key]')?.dataset.key;
    if (key) {
      press(key);
    }
  });
  document.addEventListener('keydown', (event) => {
    const key = keyOf(event);
    const button = key && panel.querySelector(`[data-key=${key}]`);
    if (!button || button.disabled) {
      return;
    }
    event.preventDefault();
    button.classList.add('pressed');
    press(key);
  });
  document.addEventListener('keyup', () => {
    panel.querySelectorAll('.pressed').forEach((button) => button.classList.remove('pressed'));
  });
}
