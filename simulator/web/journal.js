// SPDX-License-Identifier: Apache-2.0
/** What the television says, as it comes. @module */

import {colouredPieces} from './ansi.js';
import {make, nameOf} from './page.js';

/** A page that stands open for a week stays small. */
const MOST_LINES = 500;
/** A scroll position this near to the end is the end. */
const NEAR = 24;

/** A list that follows its end, unless somebody has scrolled up to read. */
class Lines {
  #list;
  #waiting = [];

  constructor(list) {
    this.#list = list;
  }

  /** Adds an item with the next frame: a burst of lines costs one layout. */
  add(item) {
    if (this.#waiting.push(item) === 1) {
      requestAnimationFrame(() => this.#flush());
    }
    if (this.#waiting.length > MOST_LINES) {
      this.#waiting.splice(0, this.#waiting.length - MOST_LINES);
    }
  }

  #flush() {
    const list = this.#list;
    const follows = list.scrollHeight - list.scrollTop - list.clientHeight < NEAR;
    list.append(...this.#waiting);
    this.#waiting = [];
    while (list.childElementCount > MOST_LINES) {
      list.firstElementChild.remove();
    }
    if (follows) {
      list.scrollTop = list.scrollHeight;
    }
  }
}

const MEANINGS = {6: 'cannot be shown', 8: 'on the screen', 10: 'decoded'};

function clockOf(time) {
  return new Date(time).toTimeString().slice(0, 8);
}

/** The events of the player, and what else happens. */
export class EventJournal {
  #lines;

  constructor(list) {
    this.#lines = new Lines(list);
  }

  /** @param {import('./emp.js').PlayerEvent} event */
  addEvent(event) {
    const item = make('li', {className: `event event-${event.event}`},
                      make('time', {dateTime: new Date(event.time).toISOString()}, clockOf(event.time)), ' ',
                      make('b', {}, String(event.event)), ` ${MEANINGS[event.event] ?? event.name} `,
                      make('span', {title: event.picture}, nameOf(event.picture)));
    item.dataset.sequence = event.sequence;
    this.#lines.add(item);
  }

  /** @param {string} text @param {'note' | 'bad'} kind */
  addNote(text, kind = 'note') {
    this.#lines.add(make('li', {className: kind}, make('time', {}, clockOf(Date.now())), ` ${text}`));
  }
}

/** Lines that only say where the program passed, or what it locked. */
const TRACE = /=> (Enter|Leave)$|\b(un)?lock\b/;

/** The engine's log in its colours. */
export class LogJournal {
  #lines;

  constructor(list) {
    this.#lines = new Lines(list);
  }

  /** @param {string} line with a terminal's colours */
  add(line) {
    const pieces = colouredPieces(line);
    const text = pieces.map((piece) => piece.text).join('');
    this.#lines.add(make('li', {className: TRACE.test(text) ? 'trace' : ''},
                         ...pieces.map((piece) => make('span', {className: piece.colour || 'origin'}, piece.text))));
  }
}
