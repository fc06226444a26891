;;; nebgit-hunk.el --- Commands for the hunk at point  -*- lexical-binding: t; -*-

;; SPDX-License-Identifier: MIT

;;; Commentary:

;; Shows, stages and reverts the changed lines at point of a buffer with `nebgit-changes-mode'.

;;; Code:

(require 'nebgit-changes)

(defun nebgit-hunk--all ()
  "Return the hunks; signal a `user-error' if they are not up to date."
  (unless nebgit-changes-mode
    (user-error "Turn on nebgit-changes-mode first"))
  (unless nebgit-changes--hunks
    (user-error "No changes"))
  (unless (eql nebgit-changes--tick (buffer-chars-modified-tick))
    (user-error "The text is being compared; try again"))
  nebgit-changes--hunks)

(defun nebgit-hunk--line ()
  "Return the number of the line of point, from 0."
  (save-restriction
    (widen)
    (1- (line-number-at-pos (line-beginning-position)))))

(defun nebgit-hunk--at-point ()
  "Return the hunk at point, or signal a `user-error'."
  (let ((line (nebgit-hunk--line)))
    (or (cl-find-if (lambda (hunk)
                      (let ((first (nebgit-hunk-new-line hunk)))
                        (<= first line (+ first (max 0 (1- (nebgit-hunk-new-count hunk)))))))
                    (nebgit-hunk--all))
        (user-error "No hunk here"))))

(defun nebgit-hunk--go (line)
  "Go to LINE, from 0."
  (push-mark nil t)
  (widen)
  (goto-char (point-min))
  (forward-line line))

(defun nebgit-hunk-next ()
  "Go to the next hunk."
  (interactive)
  (let* ((line (nebgit-hunk--line))
         (next (cl-find-if (lambda (hunk) (> (nebgit-hunk-new-line hunk) line))
                           (nebgit-hunk--all))))
    (unless next (user-error "No further hunk"))
    (nebgit-hunk--go (nebgit-hunk-new-line next))))

(defun nebgit-hunk-previous ()
  "Go to the start of the previous hunk."
  (interactive)
  (let* ((line (nebgit-hunk--line))
         (previous (cl-find-if (lambda (hunk) (< (nebgit-hunk-new-line hunk) line))
                               (reverse (nebgit-hunk--all)))))
    (unless previous (user-error "No hunk before"))
    (nebgit-hunk--go (nebgit-hunk-new-line previous))))

(defun nebgit-hunk--read-base (file)
  "Return the text in FILE, that of the index."
  (with-temp-buffer
    (let ((coding-system-for-read 'utf-8-emacs-unix))
      (insert-file-contents file))
    (buffer-string)))

(defun nebgit-hunk--lines (text)
  "Return the lines of TEXT, each with its newline if it has one."
  (let ((start 0) lines)
    (while (< start (length text))
      (let ((end (string-match "\n" text start)))
        (setq end (if end (1+ end) (length text)))
        (push (substring text start end) lines)
        (setq start end)))
    (nreverse lines)))

(defun nebgit-hunk--region (hunk)
  "Return the positions at which the lines of HUNK begin and end in the buffer."
  (save-excursion
    (save-restriction
      (widen)
      (goto-char (point-min))
      (forward-line (nebgit-hunk-new-line hunk))
      (let ((begin (point)))
        (forward-line (nebgit-hunk-new-count hunk))
        (cons begin (point))))))

(defun nebgit-hunk--new-lines (hunk)
  "Return the lines of HUNK in the buffer."
  (pcase-let ((`(,begin . ,end) (nebgit-hunk--region hunk)))
    (save-restriction
      (widen)
      (nebgit-hunk--lines (buffer-substring-no-properties begin end)))))

(defun nebgit-hunk--slice (lines first count)
  "Return COUNT of LINES after the number FIRST, fewer at the ends."
  (let ((first (max 0 first)))
    (seq-subseq lines (min first (length lines)) (min (+ first count) (length lines)))))

(defun nebgit-hunk-show ()
  "Show the hunk at point as a diff."
  (interactive)
  (let* ((hunk (nebgit-hunk--at-point))
         (old (nebgit-hunk--slice (nebgit-hunk--lines (nebgit-hunk--read-base nebgit-changes--base))
                                  (nebgit-hunk-old-line hunk) (nebgit-hunk-old-count hunk)))
         (text (nebgit-hunk--body nil old (nebgit-hunk--new-lines hunk) nil)))
    (with-current-buffer (get-buffer-create "*nebgit hunk*")
      (with-silent-modifications
        (erase-buffer)
        (insert text)
        (diff-mode)
        (setq buffer-read-only t)
        (goto-char (point-min)))
      (display-buffer (current-buffer)))))

(defun nebgit-hunk-revert ()
  "Replace the hunk at point with the lines of the index.
\\[undo] restores it."
  (interactive)
  (let* ((hunk (nebgit-hunk--at-point))
         (old (nebgit-hunk--slice (nebgit-hunk--lines (nebgit-hunk--read-base nebgit-changes--base))
                                  (nebgit-hunk-old-line hunk) (nebgit-hunk-old-count hunk)))
         (region (nebgit-hunk--region hunk)))
    (atomic-change-group
      (save-restriction
        (widen)
        (goto-char (car region))
        (delete-region (car region) (cdr region))
        (save-excursion (insert (apply #'concat old)))))))

;;; Patches

(defun nebgit-hunk--body (before old new after)
  "Return the lines of a hunk: BEFORE and AFTER are context, OLD becomes NEW."
  (mapconcat (lambda (group)
               (mapconcat (lambda (line)
                            (concat (car group) line
                                    (unless (string-suffix-p "\n" line)
                                      "\n\\ No newline at end of file\n")))
                          (cdr group) ""))
             (list (cons " " before) (cons "-" old) (cons "+" new) (cons " " after))
             ""))

(defun nebgit-hunk--patch (path hunk base new)
  "Return the patch of HUNK of the file PATH, whose lines BASE become NEW."
  (let* ((first (nebgit-hunk-old-line hunk))
         (count (nebgit-hunk-old-count hunk))
         (context (min 3 first))
         (before (nebgit-hunk--slice base (- first context) context))
         (old (nebgit-hunk--slice base first count))
         (after (nebgit-hunk--slice base (+ first count) 3))
         (old-count (+ context count (length after)))
         (new-count (+ context (length new) (length after))))
    (concat (nebgit-diff-file-header
             (list (nebgit--key 'Path) path (nebgit--key 'Hunks) [t]))
            (format "@@ -%s +%s @@\n"
                    (nebgit-diff-range (if (zerop old-count) 0 (1+ (- first context))) old-count)
                    (nebgit-diff-range (if (zerop new-count) 0 (1+ (- first context))) new-count))
            (nebgit-hunk--body before old new after))))

(defun nebgit-hunk--encoded (lines base)
  "Return LINES of the buffer as they would be in the index, whose lines are BASE."
  (let ((ends (and (car base) (string-suffix-p "\r\n" (car base))))
        (coding (coding-system-change-eol-conversion
                 (or buffer-file-coding-system 'utf-8) 'unix)))
    (mapcar (lambda (line)
              (nebgit-decode (nebgit-encode-bytes
                              (encode-coding-string
                               (if ends (replace-regexp-in-string "\n\\'" "\r\n" line) line)
                               coding))))
            lines)))

(defun nebgit-encode-bytes (bytes)
  "Return BYTES, a unibyte string, as a JSON value."
  (list :base64 (base64-encode-string bytes t)))

(defun nebgit-hunk--same-p (base lines)
  "Return non-nil if BASE, lines of the index, are LINES but for their ends."
  (cl-flet ((plain (list) (mapcar (lambda (line) (string-trim-right line "[\r\n]+")) list)))
    (equal (plain base) (plain lines))))

(defun nebgit-hunk-stage ()
  "Stage the hunk at point, and nothing else of the file.
The text need not be saved."
  (interactive)
  (let ((hunk (nebgit-hunk--at-point))
        (buffer (current-buffer))
        (tick (buffer-chars-modified-tick)))
    (nebgit-changes--content
     (lambda (bytes)
       (when (buffer-live-p buffer)
         (with-current-buffer buffer
           (if (eql tick (buffer-chars-modified-tick))
               (nebgit-hunk--stage hunk (nebgit-hunk--lines
                                         (decode-coding-string bytes 'utf-8-unix)))
             (message "NEBGit: the text has changed; try again")))))
     #'nebgit-show-error)))

(defun nebgit-hunk--stage (hunk base)
  "Stage HUNK of the file whose lines in the index are BASE."
  (let* ((lines (nebgit-hunk--lines (nebgit-hunk--read-base nebgit-changes--base)))
         (path (nebgit-changes--path)))
    (if (not (nebgit-hunk--same-p base (nebgit-hunk--encoded lines nil)))
        (message "NEBGit: git filters this file; stage it as a whole")
      (nebgit-perform
       (nebgit-request 'stage (car path)
                       :Patch (nebgit-hunk--patch (cdr path) hunk base
                                                  (nebgit-hunk--encoded
                                                   (nebgit-hunk--new-lines hunk) base)))
       :success (lambda (&rest _) (message "NEBGit: hunk staged"))))))

(provide 'nebgit-hunk)
;;; nebgit-hunk.el ends here
