// SPDX-License-Identifier: Apache-2.0
/** The list of pictures. @module */

import {make, nameOf} from './page.js';

/** A list box: one of its pictures is marked, and "choose" is told when somebody wants to see it. */
export class Chooser extends EventTarget {
  #list;
  #options = [];
  #marked = -1;

  /** @param {HTMLElement} list with the role of a list box */
  constructor(list) {
    super();
    this.#list = list;
    list.addEventListener('click', ({target}) => {
      const index = this.#options.indexOf(target.closest('[role=option]'));
      if (index >= 0) {
        this.mark(index);
        this.dispatchEvent(new Event('choose'));
      }
    });
    list.addEventListener('keydown', (event) => this.#onKey(event));
  }

  get marked() {
    return this.#marked;
  }

  /** @param {string[]} pictures paths */
  fill(pictures) {
    this.#options = pictures.map((path, index) => make(
        'li', {id: `picture-${index}`, role: 'option', title: path, 'aria-selected': false}, nameOf(path)));
    this.#list.replaceChildren(...this.#options);
    this.mark(Math.min(Math.max(this.#marked, 0), pictures.length - 1));
  }

  /** Marks a picture; beyond the ends of the list, the one at the end. */
  mark(index) {
    this.#options[this.#marked]?.setAttribute('aria-selected', false);
    this.#marked = Math.min(Math.max(index, 0), this.#options.length - 1);
    const option = this.#options[this.#marked];
    option?.setAttribute('aria-selected', true);
    this.#list.setAttribute('aria-activedescendant', option?.id ?? '');
    this.#keepInSight(option);
  }

  /** Says which picture is on the screen. */
  showCurrent(index) {
    this.#options.forEach((option, i) => option.classList.toggle('current', i === index));
  }

  /** Only the list scrolls, never the page. */
  #keepInSight(option) {
    if (option) {
      const list = this.#list;
      const top = option.offsetTop - list.offsetTop;
      list.scrollTop = Math.min(Math.max(list.scrollTop, top + option.offsetHeight - list.clientHeight), top);
    }
  }

  #onKey(event) {
    const target = {ArrowUp: this.#marked - 1, ArrowDown: this.#marked + 1, Home: 0, End: Infinity}[event.key];
    if (target !== undefined) {
      this.mark(target);
    } else if (event.key === 'Enter') {
      this.dispatchEvent(new Event('choose'));
    } else {
      return;
    }
    event.preventDefault();
    event.stopPropagation();
  }
}
