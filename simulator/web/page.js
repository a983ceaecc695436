// SPDX-License-Identifier: Apache-2.0
/** Small help with the page's elements. @module */

/** @returns {HTMLElement} the element of that id, which is there */
export function byId(id) {
  return document.getElementById(id);
}

/**
 * A new element.
 * @param {string} tag
 * @param {object} [properties] of the element; those with a dash become attributes
 * @param {...(Node | string)} children
 */
export function make(tag, properties = {}, ...children) {
  const element = document.createElement(tag);
  for (const [name, value] of Object.entries(properties)) {
    if (name.includes('-') || name === 'role' || name === 'list') {
      element.setAttribute(name, value);
    } else {
      element[name] = value;
    }
  }
  element.append(...children);
  return element;
}

/** The last part of a path. */
export function nameOf(path) {
  return path?.split('/').at(-1) ?? '';
}

/** Tabs as the keyboard expects them: one stop of the Tab key, arrows between them. */
export function tabs(list) {
  const all = [...list.querySelectorAll('[role=tab]')];
  const select = (tab) => {
    for (const one of all) {
      const chosen = one === tab;
      one.setAttribute('aria-selected', chosen);
      one.tabIndex = chosen ? 0 : -1;
      byId(one.getAttribute('aria-controls')).hidden = !chosen;
    }
  };
  list.addEventListener('click', ({target}) => all.includes(target) && select(target));
  list.addEventListener('keydown', (event) => {
    const step = {ArrowLeft: -1, ArrowRight: 1}[event.key];
    if (step) {
      const next = all.at((all.indexOf(document.activeElement) + step) % all.length);
      select(next);
      next.focus();
      event.preventDefault();
    }
  });
}
